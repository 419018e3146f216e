#include "pane/keystroke_field.h"

#include "pane/look.h"
#include "pane/pane_text.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>

#include <algorithm>
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

constexpr qreal kStoredNameSize = 0.9;
constexpr qreal kEdgeShare = 0.45;   // of a cap's edge, between Window and WindowText
constexpr qreal kCapRadius = 3;      // pixels
constexpr qreal kRecordDotEms = 0.7; // where the centre of the dot of all that records lies

// While another program has the keyboard, a screen lock cannot get it.
constexpr std::chrono::seconds kLongestGrab{30};

} // namespace

// No context menu: the menu key would open it.
KeystrokeField::KeystrokeField(QWidget *parent) : QLineEdit(parent), fKeyboard(new WholeKeyboard(this)) {
    setReadOnly(true);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setCursor(Qt::ArrowCursor);
    fGrabLimit.setSingleShot(true);
    connect(&fGrabLimit, &QTimer::timeout, this, &KeystrokeField::EndWaiting);
    connect(fKeyboard, &WholeKeyboard::answered, this, &KeystrokeField::TakeAnswer);
    UpdateTexts();
}

// An input method would swallow dead keys. It asks this, not whether the field is read-only.
QVariant KeystrokeField::inputMethodQuery(Qt::InputMethodQuery query) const {
    return query == Qt::ImEnabled ? QVariant(false) : QLineEdit::inputMethodQuery(query);
}

void KeystrokeField::ShowKeystroke(const QString &keystroke, const QStringList &caps) {
    fKeystroke = keystroke;
    fCaps = caps;
    setToolTip(caps.isEmpty() ? QString() : PlainToolTip(tr("Stored as %1").arg(keystroke)));
    UpdateTexts();
    update();
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
    setTextMargins(isWaiting ? static_cast<int>(EmOf(font()) * 2 * kRecordDotEms) - 4 : 0, 0, 0, 0);
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
    if (const QString shown = fIsWaiting ? tr("Press the keys now") : fKeystroke; text() != shown) {
        setText(shown);
    }
    const QString state = fIsDesktopFirst
                              ? tr("Waiting for a key combination. Those of the desktop do not arrive: "
                                   "press the key alone, then check its modifiers.")
                          : fIsWaiting ? tr("Waiting for a key combination.")
                                       : tr("Press Enter, then the keys.");
    QStringList lines = {fRemark, state};
    if (!fCaps.isEmpty()) {
        lines.insert(1, tr("%1, stored as %2").arg(fCaps.join(QLatin1Char('+')), fKeystroke));
    }
    lines.removeAll(QString());
    setAccessibleDescription(lines.join(QLatin1Char('\n')));
}

// A click in many places of a window leaves the keyboard focus where it is, but the user has left the field.
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

// The mouse does not select text here.
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
    if (fIsWaiting || fCaps.isEmpty()) {
        QLineEdit::paintEvent(event);
    } else {
        PaintCaps();
    }
    if (fIsWaiting) {
        constexpr int kFrameWidth = 2; // device-independent pixels
        QPainter painter(this);
        painter.setPen(QPen(palette().highlight(), kFrameWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
        const qreal em = EmOf(font());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().highlight());
        painter.drawEllipse(QPointF(kRecordDotEms * em, height() / 2.0), em / 4, em / 4);
    }
}

// Paints the frame of a field without its text, and the caps in it.
void KeystrokeField::PaintCaps() {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOptionFrame frame;
    initStyleOption(&frame);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);
    const int unit = static_cast<int>(UnitOf(EmOf(font())));
    int x = 2 * unit;
    for (const QString &cap : fCaps) {
        if (x > 2 * unit) {
            painter.setPen(DimColor(palette()));
            painter.drawText(QRect(x, 0, 3 * unit, height()), Qt::AlignCenter, QStringLiteral("+"));
            x += 3 * unit;
        }
        x = PaintCap(painter, x, cap);
    }
    painter.setFont(ScaledFont(font(), kStoredNameSize));
    const int room = painter.fontMetrics().horizontalAdvance(fKeystroke);
    if (x + room + 4 * unit < width()) {
        painter.setPen(DimColor(palette()));
        painter.drawText(rect().adjusted(0, 0, -2 * unit, 0), Qt::AlignRight | Qt::AlignVCenter, fKeystroke);
    }
}

// Paints a cap and returns its right end.
int KeystrokeField::PaintCap(QPainter &painter, int x, const QString &cap) const {
    const int unit = static_cast<int>(UnitOf(EmOf(font())));
    const int top = std::max(2, (height() - 2 * static_cast<int>(EmOf(font()))) / 2);
    const QRectF place(x + 0.5, top + 0.5, fontMetrics().horizontalAdvance(cap) + 3 * unit,
                       height() - 2 * top - 1);
    const QColor edge = IsHighContrast(palette()) ? palette().color(QPalette::WindowText)
                                                  : Blend(palette().color(QPalette::Window),
                                                          palette().color(QPalette::WindowText), kEdgeShare);
    painter.setPen(edge);
    painter.setBrush(edge);
    painter.drawRoundedRect(place, kCapRadius, kCapRadius); // the key's side, seen below its top
    painter.setBrush(palette().color(QPalette::Button));
    painter.drawRoundedRect(place.adjusted(0, 0, 0, -1.5), kCapRadius, kCapRadius);
    painter.setPen(palette().color(QPalette::ButtonText));
    painter.drawText(place.adjusted(0, 0, 0, -1), Qt::AlignCenter, cap);
    return static_cast<int>(place.right()) + 1;
}

} // namespace drevix
