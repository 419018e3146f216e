// The field that shows a keystroke and records a new one when keys are pressed.
#pragma once

#include "pane/whole_keyboard.h"

#include <QLineEdit>
#include <QStringList>
#include <QTimer>

class QPainter;

namespace drevix {

// A click, Return, Enter, Space or F2 makes the field wait for a key combination, and it says so. It waits
// until EndWaiting, or until the user goes elsewhere: clicks beside it, or gives another field or window the
// keyboard. Keys reach it through the keystroke capture, which asks IsWaiting.
//
// While it waits it asks for the whole keyboard, so that combinations of the desktop (Alt+F4, Alt+Tab) can be
// given too, and waits for half a minute at most when it has it. A desktop that asks its user first takes the
// keyboard for that; the field waits again when it is clicked again.
class KeystrokeField : public QLineEdit {
    Q_OBJECT

  public:
    explicit KeystrokeField(QWidget *parent = nullptr);

    // Sets what is shown, now or as soon as the field stops waiting. The field's text is the keystroke's
    // stored name. Painted are its key caps, followed by the stored name if it fits, else that is the tool
    // tip. Without caps the text is painted.
    void ShowKeystroke(const QString &keystroke, const QStringList &caps);
    // A remark on the keystroke for assistive technology, which cannot see the text below the field.
    void SetRemark(const QString &remark);

    // Whether the field gets the next key combination: it waits, in the active window.
    [[nodiscard]] bool IsWaiting() const;
    void EndWaiting();
    // Whether it waits and the desktop keeps its own combinations, so that they never come here.
    [[nodiscard]] bool IsDesktopFirst() const { return fIsDesktopFirst; }

    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  Q_SIGNALS:
    // It started or stopped waiting, or IsDesktopFirst has changed.
    void waitingChanged();

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
    void TakeAnswer(bool isGiven);
    void UpdateTexts();
    void PaintCaps();
    int PaintCap(QPainter &painter, int x, const QString &cap) const;

    QString fKeystroke;
    QStringList fCaps;
    QString fRemark;
    QTimer fGrabLimit;
    WholeKeyboard *fKeyboard; // belongs to this
    bool fIsWaiting = false;
    bool fIsDesktopFirst = false;
};

} // namespace drevix
