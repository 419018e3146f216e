#include "pane/confirm_panel.h"

#include "pane/target_boxes.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

#include <array>

namespace drevix {
namespace {

// What a panel says, by its kind.
struct ConfirmTexts {
    const char *panel; // outlets
    const char *name;
    const char *title;
    const char *question;
    const char *effect;
    const char *agree;
    const char *refuse;
};
constexpr auto kTexts = std::to_array<ConfirmTexts>({
    {"uiRemovePanel", "uiRemoveTextName", QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Delete Settings?"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Delete these settings?"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Global Settings will be used instead."),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "&Delete"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Cancel")},
    {"uiReplacePanel", "uiReplaceTextName", QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Replace Settings"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Replace these settings?"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "The new settings replace the old ones."),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "&Replace"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "&Keep Old")},
    {"uiImportPanel", "uiImportTextName", QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Import Settings"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Import the settings in this file?"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "You are asked again before any of yours are replaced."),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "&Import"),
     QT_TRANSLATE_NOOP("drevix::ConfirmPanel", "Cancel")},
});

QLabel *MakeLabel(const QString &text) {
    auto *const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText); // a name is no markup
    return label;
}

} // namespace

ConfirmPanel::ConfirmPanel(Kind kind, const QString &name, QWidget *window)
    : QDialog(window), fForAll(new CheckBox(tr("Do the same for &all"))) {
    const ConfirmTexts &texts = kTexts[static_cast<std::size_t>(kind)];
    setObjectName(QLatin1String(texts.panel));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr(texts.title));

    auto *const icon = new QLabel;
    const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(iconSize));
    QLabel *question = MakeLabel(tr(texts.question));
    QLabel *nameLabel = MakeLabel(name);
    nameLabel->setObjectName(QLatin1String(texts.name));
    QFont bold = nameLabel->font();
    bold.setBold(true);
    nameLabel->setFont(bold);
    setAccessibleDescription(question->text() + QLatin1Char(' ') + name);
    fForAll->hide();

    auto *const buttons = new QDialogButtonBox;
    QPushButton *agree = buttons->addButton(tr(texts.agree), QDialogButtonBox::AcceptRole);
    QPushButton *refuse = buttons->addButton(tr(texts.refuse), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &ConfirmPanel::actModalButtonOK);
    connect(buttons, &QDialogButtonBox::rejected, this, &ConfirmPanel::actModalButtonCancel);

    auto *const layout = new QGridLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setHorizontalSpacing(2 * layout->horizontalSpacing());
    layout->addWidget(icon, 0, 0, 4, 1, Qt::AlignTop);
    layout->addWidget(question, 0, 1);
    layout->addWidget(nameLabel, 1, 1);
    fEffect = MakeLabel(tr(texts.effect));
    layout->addWidget(fEffect, 2, 1);
    layout->addWidget(fForAll, 3, 1);
    layout->addWidget(buttons, 4, 0, 1, 2);
    QPushButton *preset = kind == Kind::Import ? agree : refuse;
    preset->setDefault(true); // now that it is in a dialog that can know of it
    preset->setFocus();
}

void ConfirmPanel::NameReplaced(const QString &name) {
    if (!name.isEmpty()) {
        fEffect->setText(tr("They replace the settings of %1, which has the same stored name.").arg(name));
    }
}

void ConfirmPanel::OfferAll(bool isOffered) {
    fForAll->setVisible(isOffered);
}

bool ConfirmPanel::IsForAll() const {
    return fForAll->isChecked();
}

void ConfirmPanel::actModalButtonOK() {
    done(1);
}

void ConfirmPanel::actModalButtonCancel() {
    done(0);
}

} // namespace drevix
