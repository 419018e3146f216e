#include "pane/device_picture.h"

#include "pane/device_drawing.h"
#include "pane/item_field.h"
#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/picture_accessible.h"

#include <QAccessible>
#include <QContextMenuEvent>
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

// The direction of an arrow key; null for any other key.
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

constexpr qreal kOfDisabled = 0.5;
constexpr qreal kOfPointedAt = 0.35; // of a light

} // namespace

int PictureIndexOf(SlotIndex slot) {
    const auto *const found = std::ranges::find(kPictureSlots, slot);
    return found == kPictureSlots.end() ? -1 : static_cast<int>(found - kPictureSlots.begin());
}

DevicePicture::DevicePicture(QWidget *parent) : QWidget(parent) {
    InstallPictureAccessible();
    setMouseTracking(true);
    setAcceptDrops(true);
    LoadDrawing();
}

// Loads the drawing in the colours of the theme.
void DevicePicture::LoadDrawing() {
    fDrawing.load(DeviceDrawing(palette()));
    fSolidLight.reset();
    fDevice = {};
    ForgetLayout();
}

void DevicePicture::ForgetLayout() {
    fLayout.reset();
    update();
}

// Made on first use: the first paint does not need it.
const ControlMap &DevicePicture::Map() const {
    if (!fMap) {
        fMap.emplace(fDrawing);
    }
    return *fMap;
}

QSvgRenderer &DevicePicture::SolidLight() const {
    if (!fSolidLight) {
        fSolidLight.emplace(
            DeviceDrawing(palette()).replace("fill-opacity=\"0.35\"", "fill-opacity=\"0.75\""));
    }
    return *fSolidLight;
}

bool DevicePicture::HasCallouts() const {
    const QSizeF least = MinimumStage(EmOf(font()));
    return width() >= least.width() && height() >= least.height();
}

const StageLayout &DevicePicture::Layout() const {
    if (!fLayout) {
        QStringList names;
        for (const ControlText &text : fTexts) {
            names += text.name;
        }
        fLayout = LayOutStage(size(), {EmOf(font()), WidestName(font(), names)});
    }
    return *fLayout;
}

QRectF DevicePicture::DrawnRect() const {
    if (HasCallouts()) {
        return Layout().picture;
    }
    const qreal side = std::min(width(), height());
    return {(width() - side) / 2, (height() - side) / 2, side, side};
}

int DevicePicture::controlAt(const QPoint &point) const {
    for (int i = 0; i < kPictureControls; ++i) {
        if (calloutRect(i).contains(point)) {
            return i;
        }
    }
    const QRectF drawn = DrawnRect();
    const QPointF onMap =
        (QPointF(point) + QPointF(0.5, 0.5) - drawn.topLeft()) * ControlMap::kSide / drawn.width();
    const QPoint at(static_cast<int>(std::floor(onMap.x())), static_cast<int>(std::floor(onMap.y())));
    return Map().At(at);
}

QRect DevicePicture::calloutRect(int index) const {
    return HasCallouts() ? Layout().callouts[static_cast<std::size_t>(index)].frame.toAlignedRect() : QRect();
}

// Where the light of a control is drawn.
QRectF DevicePicture::AreaOf(int index) const {
    const QRectF area = fDrawing.boundsOnElement(ElementOfControl("lit-", index));
    const QRectF drawn = DrawnRect();
    const qreal scale = drawn.width() / ControlMap::kSide;
    return {drawn.topLeft() + area.topLeft() * scale, area.size() * scale};
}

QRect DevicePicture::controlRect(int index) const {
    return AreaOf(index).toAlignedRect() | calloutRect(index);
}

QPoint DevicePicture::controlPoint(int index) const {
    const QRectF drawn = DrawnRect();
    return (drawn.topLeft() + QPointF(Map().Anchor(index)) * drawn.width() / ControlMap::kSide).toPoint();
}

void DevicePicture::UpdateControl(int index) {
    if (index >= 0) { // the line between the two lies within; focus rings and thick lines stand out a little
        const int margin = static_cast<int>(EmOf(font()));
        update(controlRect(index).adjusted(-margin, -margin, margin, margin));
    }
}

void DevicePicture::setCurrentIndex(int index) {
    if (fCurrent != index) {
        UpdateControl(fCurrent);
        UpdateControl(index);
        fCurrent = index;
        QAccessibleEvent selection(this, QAccessible::Selection);
        selection.setChild(index);
        QAccessible::updateAccessibility(&selection);
    }
}

void DevicePicture::setPressed(int index, bool isPressed) {
    if (this->isPressed(index) != isPressed) {
        fPressed.set(static_cast<std::size_t>(index), isPressed);
        UpdateControl(index);
        QAccessibleEvent change(this, QAccessible::DescriptionChanged);
        change.setChild(index);
        QAccessible::updateAccessibility(&change);
    }
}

void DevicePicture::setControlText(int index, const ControlText &text) {
    ControlText &shown = fTexts[static_cast<std::size_t>(index)];
    if (shown == text) {
        return;
    }
    if (shown.name != text.name) {
        ForgetLayout();
    }
    shown = text;
    UpdateControl(index);
    QAccessibleValueChangeEvent change(this, text.action);
    change.setChild(index);
    QAccessible::updateAccessibility(&change);
}

QSize DevicePicture::sizeHint() const {
    const int em = static_cast<int>(EmOf(font()));
    return {44 * em, 22 * em};
}

QSize DevicePicture::minimumSizeHint() const {
    const QSizeF least = MinimumStage(EmOf(font()));
    return {static_cast<int>(std::ceil(least.width())), static_cast<int>(std::ceil(least.height()))};
}

ControlState DevicePicture::StateOf(int index) const {
    return {.isChosen = index == fCurrent,
            .isPointedAt = index == fHovered,
            .isPressed = isPressed(index),
            .isFocused = index == fFocused};
}

void DevicePicture::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (HasCallouts()) {
        painter.fillRect(rect(), palette().color(QPalette::Base));
    }
    painter.setOpacity(isEnabled() ? 1.0 : kOfDisabled);
    PaintDevice(painter);
    PaintLights(painter);
    painter.setOpacity(isEnabled() ? 1.0 : kOfDisabled);
    PaintCallouts(painter);
}

// Drawn once and cached: an edit changes only lights and texts.
void DevicePicture::PaintDevice(QPainter &painter) const {
    const QRectF drawn = DrawnRect();
    const qreal scale = devicePixelRatioF();
    const QSize pixels = (drawn.size() * scale).toSize();
    if (fDevice.size() != pixels || fDevice.devicePixelRatio() != scale) {
        fDevice = QPixmap(pixels);
        fDevice.setDevicePixelRatio(scale);
        fDevice.fill(Qt::transparent);
        QPainter device(&fDevice);
        device.scale(drawn.width() / ControlMap::kSide, drawn.width() / ControlMap::kSide);
        const QString element = QStringLiteral("device");
        fDrawing.render(&device, element, fDrawing.boundsOnElement(element));
    }
    painter.drawPixmap(drawn.topLeft(), fDevice);
}

void DevicePicture::PaintLights(QPainter &painter) const {
    for (int i = 0; i < kPictureControls; ++i) {
        const ControlState state = StateOf(i);
        if (state.isChosen || state.isPressed || state.isPointedAt) {
            painter.setOpacity(state.isChosen || state.isPressed ? 1.0 : kOfPointedAt);
            (state.isPressed ? SolidLight() : fDrawing)
                .render(&painter, ElementOfControl("lit-", i), AreaOf(i));
        }
    }
    if (fFocused >= 0 && !HasCallouts()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = controlRect(fFocused).adjusted(-3, -3, 3, 3);
        option.state |= QStyle::State_KeyboardFocusChange;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

// Lines are below all callouts, with the chosen control's line above the others.
void DevicePicture::PaintCallouts(QPainter &painter) const {
    if (!HasCallouts()) {
        return;
    }
    const CalloutPainter callouts(font(), palette(), Layout().form);
    const auto paint = [&](auto &&part) {
        for (const bool isFront : {false, true}) {
            for (int i = 0; i < kPictureControls; ++i) {
                const ControlState state = StateOf(i);
                if ((state.isChosen || state.isFocused) == isFront) {
                    part(Layout().callouts[static_cast<std::size_t>(i)], i, state);
                }
            }
        }
    };
    paint([&](const Callout &callout, int /*index*/, const ControlState &state) {
        callouts.PaintLeader(painter, callout, state);
    });
    paint([&](const Callout &callout, int index, const ControlState &state) {
        callouts.PaintCallout(painter, callout, controlText(index), state);
    });
}

void DevicePicture::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fLayout.reset();
}

void DevicePicture::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        LoadDrawing();
    } else if (event->type() == QEvent::FontChange) {
        ForgetLayout();
    }
}

bool DevicePicture::event(QEvent *event) {
    if (event->type() != QEvent::ToolTip) {
        return QWidget::event(event);
    }
    const auto *const help = static_cast<QHelpEvent *>(event);
    if (const int index = controlAt(help->pos()); index >= 0) {
        const ControlText &text = controlText(index);
        const QString line = tr("%1: %2").arg(text.name, text.action);
        QToolTip::showText(help->globalPos(),
                           PlainToolTip(text.note.isEmpty() ? line : line + QLatin1Char('\n') + text.note),
                           this, controlRect(index));
    } else {
        QToolTip::hideText();
    }
    return true;
}

void DevicePicture::SetHovered(int index) {
    if (fHovered != index) {
        UpdateControl(fHovered);
        UpdateControl(index);
        fHovered = index;
        setCursor(index < 0 ? Qt::ArrowCursor : Qt::PointingHandCursor);
    }
}

void DevicePicture::SetFocused(int index) {
    UpdateControl(fFocused);
    UpdateControl(index);
    fFocused = index;
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

// Lights up the control that would take the item.
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

// Where users look for a control: at its callout.
QPointF DevicePicture::PlaceOf(int index) const {
    return HasCallouts() ? QRectF(calloutRect(index)).center() : QPointF(Map().Anchor(index));
}

// The nearest control in a direction, counting sideways distance twice; `from` itself if there is none.
int DevicePicture::NextControl(int from, const QPoint &way) const {
    int nearest = from;
    qreal shortest = 0;
    for (int i = 0; i < kPictureControls; ++i) {
        const QPointF step = PlaceOf(i) - PlaceOf(from);
        const qreal along = QPointF::dotProduct(step, way);
        const qreal distance = along + 2 * std::abs(step.x() * way.y() + step.y() * way.x());
        if (along > 0 && (nearest == from || distance < shortest)) {
            nearest = i;
            shortest = distance;
        }
    }
    return nearest;
}

// Arrow keys move to the next control in their direction; Return and Space choose it.
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

void DevicePicture::contextMenuEvent(QContextMenuEvent *event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const int index = isByKey ? (fFocused >= 0 ? fFocused : fCurrent) : controlAt(event->pos());
    if (index < 0) {
        QWidget::contextMenuEvent(event);
        return;
    }
    const QRect callout = calloutRect(index);
    const QPoint beside = callout.isEmpty() ? controlPoint(index) : callout.bottomLeft();
    Q_EMIT menuRequested(index, isByKey ? mapToGlobal(beside) : event->globalPos());
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
