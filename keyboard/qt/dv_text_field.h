// A label whose text is a template with marks for the panel to fill in, such as the lines about the device.
#pragma once

#include <QLabel>
#include <QString>

#include <optional>

namespace drevix {

class DvTextField : public QLabel {
    Q_OBJECT

  public:
    explicit DvTextField(QWidget *parent = nullptr);

    // Takes the current text, from the interface file, as the template.
    void rememberTitle();
    // Shows the template with every mark "##" replaced by `text`, or by "-" if there is none. Keeps the
    // template, so it can be called again. Call rememberTitle first.
    void replaceMarkWith(const std::optional<QString> &text);

  private:
    QString fSavedTitle;
};

} // namespace drevix
