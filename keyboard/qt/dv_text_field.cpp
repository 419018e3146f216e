#include "keyboard/qt/dv_text_field.h"

namespace drevix {

// The filled-in text comes from the device, so treat nothing in it as formatting.
DvTextField::DvTextField(QWidget *parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

void DvTextField::rememberTitle() {
    fSavedTitle = text();
}

void DvTextField::replaceMarkWith(const std::optional<QString> &text) {
    QString filled = fSavedTitle;
    setText(filled.replace(QLatin1String("##"), text.value_or(QStringLiteral("-"))));
}

} // namespace drevix
