// A small round button with one character on it, such as "?".
#pragma once

#include <QToolButton>

namespace drevix {

class SignButton : public QToolButton {
    Q_OBJECT

  public:
    explicit SignButton(QWidget *parent = nullptr) : QToolButton(parent) {}
    // The character is a drawing, not the button's text: give the button an accessible name.
    void setSign(QChar sign);
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    QChar fSign;
};

} // namespace drevix
