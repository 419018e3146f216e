// The field in which a keystroke is shown, and given by pressing it.
#pragma once

#include <QLineEdit>
#include <QTimer>

namespace drevix {

// A click, Return, Enter, Space or F2 makes the field wait for a key combination, and it says so. It waits
// until EndWaiting, or until the user goes elsewhere: clicks beside it, or gives another field or window the
// keyboard. Keys reach it through the keystroke capture, which asks IsWaiting.
//
// On X11 the field has the whole keyboard while it waits, so that combinations of the desktop (Alt+F4,
// Alt+Tab) can be given too, and waits for half a minute at most. On Wayland those stay with the desktop.
class KeystrokeField : public QLineEdit {
    Q_OBJECT

  public:
    explicit KeystrokeField(QWidget *parent = nullptr);

    // What is shown, at once or when the field no longer waits.
    void ShowKeystroke(const QString &keystroke);
    // A remark on the keystroke for assistive technology, which cannot see what stands below the field.
    void SetRemark(const QString &remark);

    // Whether the next key combination is this field's: it waits, in the active window.
    [[nodiscard]] bool IsWaiting() const;
    void EndWaiting();

    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

  private:
    void SetWaiting(bool isWaiting);
    void UpdateTexts();

    QString fKeystroke;
    QString fRemark;
    QTimer fGrabLimit;
    bool fIsWaiting = false;
};

} // namespace drevix
