#include "pane/keystroke_field.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

#include <chrono>

namespace drevix {
namespace {

bool StartsWaiting(const QKeyEvent &event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_F2:
        return !event.isAutoRepeat() && (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    default:
        return false;
    }
}

// A screen lock waits in vain for a keyboard that another program has.
constexpr std::chrono::seconds kLongestGrab{30};

} // namespace

// Without a menu, which the menu key would open.
KeystrokeField::KeystrokeField(QWidget *parent) : QLineEdit(parent), fKeyboard(new WholeKeyboard(this)) {
    setReadOnly(true);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setCursor(Qt::ArrowCursor);
    fGrabLimit.setSingleShot(true);
    connect(&fGrabLimit, &QTimer::timeout, this, &KeystrokeField::EndWaiting);
    connect(fKeyboard, &WholeKeyboard::answered, this, &KeystrokeField::TakeAnswer);
    UpdateTexts();
}

// An input method would keep dead keys to itself. It asks this and not whether the field can be written in.
QVariant KeystrokeField::inputMethodQuery(Qt::InputMethodQuery query) const {
    return query == Qt::ImEnabled ? QVariant(false) : QLineEdit::inputMethodQuery(query);
}

void KeystrokeField::ShowKeystroke(const QString &keystroke) {
    fKeystroke = keystroke;
    UpdateTexts();
}

void KeystrokeField::SetRemark(const QString &remark) {
    fRemark = remark;
    UpdateTexts();
}

bool KeystrokeField::IsWaiting() const {
    return fIsWaiting && hasFocus() && isActiveWindow();
}

void KeystrokeField::EndWaiting() {
    SetWaiting(false);
}

void KeystrokeField::SetWaiting(bool isWaiting) {
    if (fIsWaiting == isWaiting) {
        return;
    }
    fIsWaiting = isWaiting;
    fGrabLimit.stop();
    fIsDesktopFirst = false;
    if (isWaiting) {
        QCoreApplication::instance()->installEventFilter(this);
        fKeyboard->Ask();
    } else {
        QCoreApplication::instance()->removeEventFilter(this);
        fKeyboard->Release();
    }
    UpdateTexts();
    update();
    Q_EMIT waitingChanged();
}

void KeystrokeField::TakeAnswer(bool isGiven) {
    if (!fIsWaiting) {
        return;
    }
    if (isGiven) {
        fGrabLimit.start(kLongestGrab);
    } else {
        fGrabLimit.stop();
    }
    fIsDesktopFirst = !isGiven;
    UpdateTexts();
    Q_EMIT waitingChanged();
}

void KeystrokeField::UpdateTexts() {
    if (const QString shown = fIsWaiting ? tr("Press a key combination…") : fKeystroke; text() != shown) {
        setText(shown);
    }
    const QString state = fIsDesktopFirst
                              ? tr("Waiting for a key combination. Those of the desktop do not arrive: "
                                   "press the key alone, then check its modifiers.")
                          : fIsWaiting ? tr("Waiting for a key combination.")
                                       : tr("Press Return, then the key combination to assign.");
    setAccessibleDescription(fRemark.isEmpty() ? state : fRemark + QLatin1Char('\n') + state);
}

// Many places of a window take a click and leave the keyboard where it is, but whoever clicks there has left
// the field.
bool KeystrokeField::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::MouseButtonPress && watched != this && watched->isWidgetType()) {
        EndWaiting();
    }
    return false;
}

void KeystrokeField::keyPressEvent(QKeyEvent *event) {
    if (StartsWaiting(*event)) {
        SetWaiting(true);
        event->accept();
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

// The mouse selects no text here.
void KeystrokeField::mousePressEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton) {
        deselect();
        SetWaiting(true);
    }
}

void KeystrokeField::mouseMoveEvent(QMouseEvent * /*event*/) {}
void KeystrokeField::mouseReleaseEvent(QMouseEvent * /*event*/) {}
void KeystrokeField::mouseDoubleClickEvent(QMouseEvent * /*event*/) {}

void KeystrokeField::focusOutEvent(QFocusEvent *event) {
    EndWaiting();
    QLineEdit::focusOutEvent(event);
}

void KeystrokeField::paintEvent(QPaintEvent *event) {
    QLineEdit::paintEvent(event);
    if (fIsWaiting) {
        constexpr int kFrameWidth = 2; // device-independent pixels
        QPainter painter(this);
        painter.setPen(QPen(palette().highlight(), kFrameWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

} // namespace drevix
