#include "pane/device_picture.h"

#include "pane/item_field.h"
#include "pane/picture_accessible.h"

#include <QAccessible>
#include <QFile>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace drevix {
namespace {

constexpr int kSide = ControlMap::kSide;
constexpr int kControls = static_cast<int>(kPictureSlots.size());

QColor Blend(const QColor &a, const QColor &b, qreal share) {
    const auto mix = [share](int x, int y) { return static_cast<int>(std::lround(x + (y - x) * share)); };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

// The colours of the drawing's file, and what stands for them in a theme.
struct DrawingColor {
    const char *inFile;
    QColor (*inTheme)(const QPalette &palette);
};
constexpr auto kDrawingColors = std::to_array<DrawingColor>({
    {"#e6e7ea",
     [](const QPalette &p) { return Blend(p.color(QPalette::Window), p.color(QPalette::WindowText), 0.05); }},
    {"#f7f7f9",
     [](const QPalette &p) { return Blend(p.color(QPalette::Base), p.color(QPalette::Text), 0.02); }},
    {"#4a4f57",
     [](const QPalette &p) { return Blend(p.color(QPalette::Window), p.color(QPalette::WindowText), 0.7); }},
    {"#2f6fde", [](const QPalette &p) { return p.color(QPalette::Highlight); }},
});

// The direction of an arrow key, null for another.
QPoint WayOfKey(int key) {
    switch (key) {
    case Qt::Key_Left:
        return {-1, 0};
    case Qt::Key_Right:
        return {1, 0};
    case Qt::Key_Up:
        return {0, -1};
    case Qt::Key_Down:
        return {0, 1};
    default:
        return {};
    }
}

bool IsChoosingKey(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
}

} // namespace

DevicePicture::DevicePicture(QWidget *parent) : QWidget(parent) {
    InstallPictureAccessible();
    setMouseTracking(true);
    setAcceptDrops(true);
    LoadDrawing();
}

// Loads the drawing in the colours of the theme.
void DevicePicture::LoadDrawing() {
    QFile file(QStringLiteral(":/drevix/device.svg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QByteArray drawing = file.readAll();
    for (const DrawingColor &color : kDrawingColors) {
        drawing.replace(color.inFile, color.inTheme(palette()).name().toLatin1());
    }
    fDrawing.load(drawing);
}

// Made when it is first needed: the first picture does without.
const ControlMap &DevicePicture::Map() const {
    if (!fMap) {
        fMap.emplace(fDrawing);
    }
    return *fMap;
}

QRectF DevicePicture::DrawnRect() const {
    const qreal side = std::min(width(), height());
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

int DevicePicture::controlAt(const QPoint &point) const {
    const QRectF drawn = DrawnRect();
    const QPointF onMap = (QPointF(point) + QPointF(0.5, 0.5) - drawn.topLeft()) * kSide / drawn.width();
    const QPoint at(static_cast<int>(std::floor(onMap.x())), static_cast<int>(std::floor(onMap.y())));
    return Map().At(at);
}

QRect DevicePicture::controlRect(int index) const {
    const QRectF area = fDrawing.boundsOnElement(ElementOfControl("lit-", index));
    const QRectF drawn = DrawnRect();
    const qreal scale = drawn.width() / kSide;
    return QRectF(drawn.topLeft() + area.topLeft() * scale, area.size() * scale).toAlignedRect();
}

QPoint DevicePicture::controlPoint(int index) const {
    const QRectF drawn = DrawnRect();
    return (drawn.topLeft() + QPointF(Map().Anchor(index)) * drawn.width() / kSide).toPoint();
}

void DevicePicture::setCurrentIndex(int index) {
    if (fCurrent != index) {
        fCurrent = index;
        update();
    }
}

void DevicePicture::setControlText(int index, const QString &name, const QString &action) {
    Control &control = fControls[static_cast<std::size_t>(index)];
    control.name = name;
    control.action = action;
}

QString DevicePicture::controlName(int index) const {
    return ControlOf(index).name;
}

QString DevicePicture::controlAction(int index) const {
    return ControlOf(index).action;
}

QSize DevicePicture::sizeHint() const {
    const int side = 22 * fontMetrics().height();
    return {side, side};
}

QSize DevicePicture::minimumSizeHint() const {
    const int side = 11 * fontMetrics().height();
    return {side, side};
}

void DevicePicture::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const QRectF drawn = DrawnRect();
    painter.translate(drawn.topLeft());
    painter.scale(drawn.width() / kSide, drawn.width() / kSide);
    const auto render = [&](const QString &element, qreal opacity) {
        painter.setOpacity(opacity);
        fDrawing.render(&painter, element, fDrawing.boundsOnElement(element));
    };
    render(QStringLiteral("device"), isEnabled() ? 1.0 : 0.5);
    if (fCurrent >= 0) {
        render(ElementOfControl("lit-", fCurrent), 1.0);
    }
    if (fHovered >= 0 && fHovered != fCurrent) {
        render(ElementOfControl("lit-", fHovered), 0.35);
    }
    if (fFocused >= 0) {
        painter.resetTransform();
        painter.setOpacity(1.0);
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = controlRect(fFocused).adjusted(-3, -3, 3, 3);
        option.state |= QStyle::State_KeyboardFocusChange;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void DevicePicture::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        LoadDrawing();
        update();
    }
}

bool DevicePicture::event(QEvent *event) {
    if (event->type() != QEvent::ToolTip) {
        return QWidget::event(event);
    }
    const auto *const help = static_cast<QHelpEvent *>(event);
    if (const int index = controlAt(help->pos()); index >= 0) {
        const QString text = tr("%1: %2").arg(controlName(index), controlAction(index));
        QToolTip::showText(help->globalPos(), text.toHtmlEscaped(), this, controlRect(index));
    } else {
        QToolTip::hideText();
    }
    return true;
}

void DevicePicture::SetHovered(int index) {
    if (fHovered != index) {
        fHovered = index;
        setCursor(index < 0 ? Qt::ArrowCursor : Qt::PointingHandCursor);
        update();
    }
}

void DevicePicture::SetFocused(int index) {
    fFocused = index;
    update();
    if (index >= 0) {
        QAccessibleEvent focus(this, QAccessible::Focus);
        focus.setChild(index);
        QAccessible::updateAccessibility(&focus);
    }
}

void DevicePicture::mouseMoveEvent(QMouseEvent *event) {
    SetHovered(controlAt(event->pos()));
}

void DevicePicture::leaveEvent(QEvent * /*event*/) {
    SetHovered(-1);
}

void DevicePicture::dragEnterEvent(QDragEnterEvent *event) {
    std::ignore = TakeDraggedItem(event); // dropped later, if at all
}

// The control that would take the item lights up.
void DevicePicture::dragMoveEvent(QDragMoveEvent *event) {
    SetHovered(controlAt(event->position().toPoint()));
    event->setAccepted(fHovered >= 0 && !TakeDraggedItem(event).isEmpty());
}

void DevicePicture::dragLeaveEvent(QDragLeaveEvent * /*event*/) {
    SetHovered(-1);
}

void DevicePicture::dropEvent(QDropEvent *event) {
    SetHovered(-1);
    const int index = controlAt(event->position().toPoint());
    const QString path = TakeDraggedItem(event);
    event->setAccepted(index >= 0 && !path.isEmpty());
    if (event->isAccepted()) {
        Q_EMIT itemDropped(index, path);
    }
}

void DevicePicture::mousePressEvent(QMouseEvent *event) {
    const int index = event->button() == Qt::LeftButton ? controlAt(event->pos()) : -1;
    if (index < 0) {
        QWidget::mousePressEvent(event);
        return;
    }
    SetFocused(index);
    Q_EMIT activated(index);
}

// The nearest control in a direction, with what lies aside counting twice; `from` itself when there is none.
int DevicePicture::NextControl(int from, const QPoint &way) const {
    int nearest = from;
    int shortest = 0;
    for (int i = 0; i < kControls; ++i) {
        const QPoint step = Map().Anchor(i) - Map().Anchor(from);
        const int along = QPoint::dotProduct(step, way);
        const int distance = along + 2 * std::abs(step.x() * way.y() + step.y() * way.x());
        if (along > 0 && (nearest == from || distance < shortest)) {
            nearest = i;
            shortest = distance;
        }
    }
    return nearest;
}

// Arrow keys go to the next control in their direction, Return and the space bar choose it.
void DevicePicture::keyPressEvent(QKeyEvent *event) {
    const int from = std::max(fFocused >= 0 ? fFocused : fCurrent, 0);
    if (const QPoint way = WayOfKey(event->key()); !way.isNull()) {
        SetFocused(NextControl(from, way));
    } else if (IsChoosingKey(event->key())) {
        Q_EMIT activated(from);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void DevicePicture::focusInEvent(QFocusEvent *event) {
    QWidget::focusInEvent(event);
    if (event->reason() != Qt::MouseFocusReason) { // a click tells itself which control is meant
        SetFocused(std::max(fCurrent, 0));
    }
}

void DevicePicture::focusOutEvent(QFocusEvent *event) {
    QWidget::focusOutEvent(event);
    SetFocused(-1);
}

} // namespace drevix
