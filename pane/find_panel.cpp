#include "pane/find_panel.h"

#include "pane/look.h"
#include "pane/panel_icons.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextLayout>
#include <QVBoxLayout>

#include <array>
#include <utility>

namespace drevix {
namespace {

constexpr int kEntryRole = Qt::UserRole;      // the entry's number; -1 for the typed keystroke
constexpr int kPartsRole = Qt::UserRole + 1;  // start and length by turns
constexpr int kBesideRole = Qt::UserRole + 2; // the group, or why the action cannot be taken
constexpr int kTypedKeystroke = -1;
constexpr qreal kWidth = 32; // em
constexpr qreal kHeight = 15;
constexpr qreal kRowHeight = 1.65;
constexpr auto kListKeys = std::to_array<int>({Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown});

// Paints the title, with the typed text in bold, and beside it the group or the reason.
class FoundDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex & /*index*/) const override {
        return {0, static_cast<int>(kRowHeight * EmOf(option.font))};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        QStyleOptionViewItem ground = option;
        ground.state |= QStyle::State_Active; // a pop-up's list is the one in use
        option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &ground, painter, option.widget);
        const bool isSelected = (option.state & QStyle::State_Selected) != 0;
        const bool isEnabled = (index.flags() & Qt::ItemIsEnabled) != 0;
        QPalette palette = option.palette; // what cannot be taken is there to be read all the same
        palette.setCurrentColorGroup(QPalette::Active);
        const QColor dim = DimColor(palette);
        const QColor strong = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
        const int margin = static_cast<int>(2 * UnitOf(EmOf(option.font)));
        const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
        painter->setPen(isSelected ? strong : dim);
        QRect besideRect;
        painter->drawText(room, Qt::AlignRight | Qt::AlignVCenter, index.data(kBesideRole).toString(),
                          &besideRect);
        painter->setPen(isEnabled ? strong : dim);
        QRect rest = room.adjusted(0, 0, -besideRect.width() - margin, 0);
        if (const auto icon = index.data(Qt::DecorationRole).value<QIcon>(); !icon.isNull()) {
            const int side = option.decorationSize.width();
            icon.paint(painter, QRect(rest.left(), rest.top(), side, rest.height()), Qt::AlignCenter,
                       isSelected   ? QIcon::Selected
                       : !isEnabled ? QIcon::Disabled
                                    : QIcon::Normal);
            rest.setLeft(rest.left() + side + margin);
        }
        PaintTitle(painter, option.font, rest, index);
    }

  private:
    static void PaintTitle(QPainter *painter, const QFont &font, const QRect &room,
                           const QModelIndex &index) {
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        QList<QTextLayout::FormatRange> formats;
        const QVariantList parts = index.data(kPartsRole).toList();
        for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
            formats.append({parts[i].toInt(), parts[i + 1].toInt(), bold});
        }
        QFont widest = font;
        widest.setBold(true);
        const QString title = index.data(Qt::DisplayRole).toString();
        QTextLayout text(QFontMetrics(widest).elidedText(title, Qt::ElideRight, room.width()), font);
        text.setFormats(formats);
        text.beginLayout();
        QTextLine line = text.createLine();
        line.setLineWidth(1e6);
        text.endLayout();
        painter->save();
        painter->setClipRect(room);
        text.draw(painter, QPointF(room.left(), room.top() + (room.height() - line.height()) / 2));
        painter->restore();
    }
};

} // namespace

FindPanel::FindPanel(QWidget *parent)
    : QFrame(parent, Qt::Popup), fEntries(SearchEntries()), fQuery(new QLineEdit), fList(new QListWidget),
      fHint(new QLabel) {
    setObjectName(QStringLiteral("uiFindPanel"));
    setAccessibleName(tr("Find Action"));
    setFrameShape(QFrame::StyledPanel);
    fQuery->setObjectName(QStringLiteral("uiFindQuery"));
    fQuery->setPlaceholderText(tr("Search actions, or type a keystroke such as ctrl+s"));
    fQuery->setAccessibleName(tr("Search actions"));
    fQuery->setClearButtonEnabled(true);
    fQuery->addAction(PanelIcon("edit-find", "system-search", Drawing::Lens), QLineEdit::LeadingPosition);
    fQuery->installEventFilter(this);
    fList->setObjectName(QStringLiteral("uiFindList"));
    fList->setAccessibleName(tr("Actions"));
    fList->setItemDelegate(new FoundDelegate(fList));
    fList->setFrameShape(QFrame::NoFrame);
    fList->setUniformItemSizes(true);
    fList->setFocusProxy(fQuery);
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    fList->setIconSize({side, side});
    fIcons = ActionMenuIcons(fList->iconSize());
    fHint->setFont(ScaledFont(font(), 0.9));
    auto *const box = new QVBoxLayout(this);
    box->addWidget(fQuery);
    box->addWidget(fList);
    box->addWidget(fHint);
    connect(fQuery, &QLineEdit::textChanged, this, &FindPanel::Show);
    connect(fList, &QListWidget::itemClicked, this, &FindPanel::Take);
}

void FindPanel::Open(const QString &control, Reason reason) {
    fReason = std::move(reason);
    fHint->setText(tr("↑ ↓ choose · Enter assigns to %1 · Esc closes").arg(control));
    QPalette dim = palette();
    dim.setColor(QPalette::WindowText, DimColor(dim));
    fHint->setPalette(dim);
    fQuery->clear();
    Show({});
    const qreal em = EmOf(font());
    const QWidget *const over = parentWidget()->window(); // the view may be larger, and scroll
    const QSize size =
        QSize(static_cast<int>(kWidth * em), static_cast<int>(kHeight * em)).boundedTo(over->size());
    const int margin = static_cast<int>(2 * UnitOf(em));
    resize(size);
    move(over->mapToGlobal(
        QPoint(over->width() - size.width() - margin, over->height() - size.height() - margin)));
    show();
    fQuery->setFocus(Qt::PopupFocusReason);
}

// Actions that can be chosen come first.
void FindPanel::Show(const QString &query) {
    fList->clear();
    fTyped = query.trimmed().isEmpty() ? std::nullopt : ReadTypedKeystroke(query);
    if (fTyped && query.contains(QLatin1Char('+'))) {
        AddKeystroke(*fTyped);
    }
    const std::vector<FoundAction> found = FindActions(fEntries, query);
    for (const bool isRefused : {false, true}) {
        for (const FoundAction &one : found) {
            const QString reason = fReason(fEntries[one.entry]);
            if (reason.isEmpty() != isRefused) {
                AddAction(one, reason);
            }
        }
    }
    if (fTyped && !query.contains(QLatin1Char('+'))) {
        AddKeystroke(*fTyped);
    }
    if (fList->count() == 0) {
        auto *const nothing = new QListWidgetItem(tr("No action matches “%1”.").arg(query), fList);
        nothing->setFlags(Qt::NoItemFlags);
        return;
    }
    const bool canTakeFirst = (fList->item(0)->flags() & Qt::ItemIsEnabled) != 0;
    fList->setCurrentRow(canTakeFirst ? 0 : -1);
}

void FindPanel::AddKeystroke(const TypedKeystroke &keystroke) {
    ActionSlot slot{};
    slot.keyCode = keystroke.keyCode;
    slot.modifiers = keystroke.modifiers;
    auto *const item = new QListWidgetItem(fIcons[static_cast<int>(ActionMenuEntry::Keystroke)],
                                           KeyCapTexts(slot).join(QLatin1Char('+')), fList);
    item->setData(kEntryRole, kTypedKeystroke);
    item->setData(kBesideRole, tr("Keystroke"));
    item->setData(Qt::AccessibleDescriptionRole, tr("Keystroke"));
}

void FindPanel::AddAction(const FoundAction &found, const QString &reason) {
    const SearchEntry &entry = fEntries[found.entry];
    QVariantList parts;
    for (const TextPart &part : found.parts) {
        parts << static_cast<int>(part.start) << static_cast<int>(part.length);
    }
    const QString beside = reason.isEmpty() ? entry.group : reason;
    auto *const item = new QListWidgetItem(fIcons[entry.position], entry.title, fList);
    item->setData(kEntryRole, static_cast<int>(found.entry));
    item->setData(kPartsRole, parts);
    item->setData(kBesideRole, beside);
    item->setData(Qt::AccessibleDescriptionRole, beside);
    if (!reason.isEmpty()) {
        item->setFlags(Qt::NoItemFlags);
    }
}

// Closes the panel first, so that the action finds the window as it was.
void FindPanel::Take(QListWidgetItem *item) {
    if (item == nullptr || (item->flags() & Qt::ItemIsEnabled) == 0) {
        return;
    }
    const int number = item->data(kEntryRole).toInt();
    close();
    if (number == kTypedKeystroke) {
        Q_EMIT keystrokeChosen(*fTyped);
    } else {
        Q_EMIT chosen(fEntries[static_cast<std::size_t>(number)]);
    }
}

bool FindPanel::PassToList(QKeyEvent *event) {
    if (std::ranges::find(kListKeys, event->key()) != kListKeys.end()) {
        QCoreApplication::sendEvent(fList, event);
        return true;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Take(fList->currentItem());
        return true;
    }
    return false;
}

bool FindPanel::eventFilter(QObject *watched, QEvent *event) {
    return (watched == fQuery && event->type() == QEvent::KeyPress &&
            PassToList(static_cast<QKeyEvent *>(event))) ||
           QFrame::eventFilter(watched, event);
}

} // namespace drevix
