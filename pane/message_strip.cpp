#include "pane/message_strip.h"

#include "pane/panel_icons.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include <utility>

namespace drevix {
namespace {

constexpr qreal kSignEms = 1.4;
constexpr qreal kBadgeEms = 1.65;

struct KindLook {
    Tint tint;
    const char *icon; // in the theme; null: none
    QStyle::StandardPixmap standIn;
};
constexpr auto kLooks = std::to_array<KindLook>({
    {Tint::News, "dialog-information", QStyle::SP_MessageBoxInformation},
    {Tint::News, "dialog-warning", QStyle::SP_MessageBoxWarning},
    {Tint::News, "dialog-warning", QStyle::SP_MessageBoxWarning},
    {Tint::Unsaved, nullptr, QStyle::SP_MessageBoxInformation},
});
static_assert(kLooks.size() == kStripKinds);

void Empty(QLayout *layout) {
    while (QLayoutItem *item = layout->takeAt(0)) {
        if (item->widget() != nullptr) {
            item->widget()->hide();
            item->widget()->deleteLater(); // it may be what was clicked
        }
        delete item;
    }
}

QLabel *MakeStripLabel(QWidget *parent, const char *name) {
    auto *const label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

MessageStrip::MessageStrip(QWidget *parent)
    : TintedBar(parent), fIcon(new QLabel(this)), fTitle(MakeStripLabel(this, "uiStripTitle")),
      fText(MakeStripLabel(this, "uiStripText")), fSteps(new QWidget(this)),
      fStepRow(new QHBoxLayout(fSteps)), fUpperRow(new QHBoxLayout), fButtonRow(new QHBoxLayout) {
    QFont bold = fTitle->font();
    bold.setWeight(QFont::DemiBold);
    fTitle->setFont(bold);
    auto *const texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(fTitle);
    texts->addWidget(fText);
    fUpperRow->addWidget(fIcon);
    fUpperRow->addLayout(texts, 1);
    fUpperRow->addLayout(fButtonRow);
    auto *const layout = new QVBoxLayout(this);
    layout->addLayout(fUpperRow);
    fStepRow->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(fSteps);
    SetLines(Qt::BottomEdge);
}

// By the font, which is not loaded until there is something to show.
void MessageStrip::SetSizes() {
    const int unit = static_cast<int>(UnitOf(EmOf(font())));
    layout()->setContentsMargins(4 * unit, 2 * unit, 3 * unit, 2 * unit);
    layout()->setSpacing(unit);
    fUpperRow->setSpacing(2 * unit);
    fStepRow->setSpacing(2 * unit);
}

bool MessageStrip::event(QEvent *event) {
    if (event->type() == QEvent::Polish || event->type() == QEvent::FontChange) {
        SetSizes();
    }
    return TintedBar::event(event);
}

void MessageStrip::Show(StripKind kind, const StripMessage &message) {
    std::optional<StripMessage> &kept = fMessages[static_cast<std::size_t>(kind)];
    if (kept != message) {
        kept = message;
        ShowFirst();
    } else {
        kept = message; // with its buttons' acts
    }
}

void MessageStrip::TakeBack(StripKind kind) {
    if (std::exchange(fMessages[static_cast<std::size_t>(kind)], std::nullopt)) {
        ShowFirst();
    }
}

bool MessageStrip::Has(StripKind kind) const {
    return fMessages[static_cast<std::size_t>(kind)].has_value();
}

std::optional<StripKind> MessageStrip::Shown() const {
    for (std::size_t i = 0; i < fMessages.size(); ++i) {
        if (fMessages[i]) {
            return static_cast<StripKind>(i);
        }
    }
    return std::nullopt;
}

QWidget *MessageStrip::FirstButton() const {
    const QLayoutItem *first = fButtonRow->itemAt(0);
    return first == nullptr ? nullptr : first->widget();
}

void MessageStrip::ShowFirst() {
    const std::optional<StripKind> kind = Shown();
    if (kind) {
        Fill(*kind, *fMessages[static_cast<std::size_t>(*kind)]);
    }
    setVisible(kind.has_value());
    if (kind) {
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
    Q_EMIT changed();
}

void MessageStrip::Fill(StripKind kind, const StripMessage &message) {
    const KindLook &look = kLooks[static_cast<std::size_t>(kind)];
    SetTint(look.tint);
    fIcon->setVisible(look.icon != nullptr);
    if (look.icon != nullptr) {
        const int side = static_cast<int>(kSignEms * EmOf(font()));
        const QIcon icon = PanelIcon(look.icon);
        fIcon->setPixmap((icon.isNull() ? style()->standardIcon(look.standIn) : icon)
                             .pixmap({side, side}, devicePixelRatioF()));
    }
    fTitle->setText(message.title);
    fText->setText(message.text);
    fText->setVisible(!message.text.isEmpty());
    setAccessibleName(message.title);
    setAccessibleDescription(message.steps.isEmpty() ? message.text : message.steps.join(QLatin1Char(' ')));
    FillSteps(message.steps);
    FillButtons(kind, message);
}

void MessageStrip::FillSteps(const QStringList &steps) {
    Empty(fStepRow);
    int number = 0;
    for (const QString &step : steps) {
        fStepRow->addWidget(new StepBadge(++number, fSteps));
        QLabel *text = MakeStripLabel(fSteps, "uiStripStep");
        text->setText(step);
        fStepRow->addWidget(text, 1);
    }
    fSteps->setVisible(!steps.isEmpty());
}

void MessageStrip::FillButtons(StripKind kind, const StripMessage &message) {
    Empty(fButtonRow);
    for (std::size_t i = 0; i < message.buttons.size(); ++i) {
        auto *const button = new QPushButton(message.buttons[i].title, this);
        button->setAutoDefault(false);
        button->setMinimumHeight(kLeastTarget);
        fButtonRow->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, kind, i] {
            if (const auto &kept = fMessages[static_cast<std::size_t>(kind)];
                kept && i < kept->buttons.size()) {
                const std::function<void()> act = kept->buttons[i].act; // which may take the message back
                act();
            }
        });
    }
    if (message.isClosable) {
        auto *const close = new QToolButton(this);
        close->setAutoRaise(true);
        close->setFocusPolicy(Qt::StrongFocus);
        const QIcon cross = PanelIcon("window-close");
        close->setIcon(cross.isNull() ? style()->standardIcon(QStyle::SP_DialogCloseButton) : cross);
        close->setAccessibleName(tr("Close"));
        close->setToolTip(tr("Close"));
        fButtonRow->addWidget(close);
        connect(close, &QToolButton::clicked, this, [this, kind] { TakeBack(kind); });
    }
}

StepBadge::StepBadge(int number, QWidget *parent) : QWidget(parent), fNumber(number) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedSize(sizeHint());
}

QSize StepBadge::sizeHint() const {
    const int side = static_cast<int>(kBadgeEms * EmOf(font()));
    return {side, side};
}

void StepBadge::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Base), 2));
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(rect(), Qt::AlignCenter, QString::number(fNumber));
}

} // namespace drevix
