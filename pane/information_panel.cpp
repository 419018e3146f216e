#include "pane/information_panel.h"

#include "keyboard/qt/dv_text_field.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace drevix {
namespace {

constexpr int kTitlePercent = 160; // of the size of other texts

DvTextField *AddField(QVBoxLayout *layout, const char *name, const QString &title,
                      const std::optional<QString> &value) {
    auto *const field = new DvTextField;
    field->setObjectName(QLatin1String(name));
    field->setText(title);
    field->rememberTitle();
    field->replaceMarkWith(value);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(field);
    return field;
}

LinkButton *AddLink(QVBoxLayout *layout, const char *name, const QString &title) {
    auto *const button = new LinkButton(title);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false); // Return closes the panel
    layout->addWidget(button);
    return button;
}

} // namespace

InformationPanel::InformationPanel(const std::optional<QString> &version, bool hasTrainer, QWidget *window)
    : QDialog(window) {
    setObjectName(QStringLiteral("uiInfoPanel"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("About Veltrana"));
    auto *const layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    DvTextField *const title =
        AddField(layout, "uiInfoTextLargeDriverVers", tr("Drevix Veltrana ##"), version);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * kTitlePercent / 100);
    title->setFont(large);
    AddField(layout, "uiInfoTextDriverVers", tr("Settings panel ##"), version);
    layout->addSpacing(fontMetrics().height() / 2);

    uiInfoButtonManual = AddLink(layout, "uiInfoButtonManual", tr("&Help"));
    uiInfoButtonTrainer = AddLink(layout, "uiInfoButtonTrainer", tr("&Trainer"));
    uiInfoButtonMainURL = AddLink(layout, "uiInfoButtonMainURL", tr("&Website"));
    uiInfoButtonSupportURL = AddLink(layout, "uiInfoButtonSupportURL", tr("&Support"));
    uiInfoButtonTrainer->setEnabled(hasTrainer);
    if (!hasTrainer) {
        uiInfoButtonTrainer->setToolTip(tr("The trainer is not installed."));
        uiInfoButtonTrainer->setAccessibleDescription(uiInfoButtonTrainer->toolTip());
    }
    layout->addSpacing(fontMetrics().height() / 2);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *const close = buttons->button(QDialogButtonBox::Close);
    close->setText(tr("&Close"));
    close->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    close->setFocus(); // now that it is in the dialog
}

} // namespace drevix
