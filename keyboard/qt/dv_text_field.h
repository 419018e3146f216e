// A text that is a template with marks for the panel to fill in, as the lines about the device are.
#pragma once

#include <QLabel>
#include <QString>

#include <optional>

namespace drevix {

class DvTextField : public QLabel {
    Q_OBJECT

  public:
    explicit DvTextField(QWidget *parent = nullptr);

    // Takes the text shown now, as the interface file gives it, for the template.
    void rememberTitle();
    // Shows the template with `text` in the place of every mark "##", and "-" there without a text. The
    // template stays as it is, so the field can be filled again. Only after rememberTitle.
    void replaceMarkWith(const std::optional<QString> &text);

  private:
    QString fSavedTitle;
};

} // namespace drevix
