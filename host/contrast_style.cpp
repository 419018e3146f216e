#include "host/contrast_style.h"

#include "pane/look.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <array>

namespace drevix {
namespace {

constexpr auto kOutlined = std::to_array<QStyle::PrimitiveElement>({
    QStyle::PE_PanelLineEdit,
    QStyle::PE_IndicatorCheckBox,
    QStyle::PE_FrameTabWidget,
    QStyle::PE_FrameFocusRect,
});
constexpr int kBarHeight = 4; // pixels
constexpr int kFocusInset = 3;

void Outline(const QStyleOption &option, QPainter *painter) {
    if (!IsHighContrast(option.palette)) {
        return;
    }
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(
        option.palette.color(isEnabled ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter->drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter->restore();
}

// The base style marks the focus with another colour, but here there is none.
void MarkFocus(const QStyleOption &option, QPainter *painter) {
    constexpr auto kMarked = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
    if (option.state.testFlags(kMarked)) {
        QStyleOption inner(option);
        inner.rect.adjust(kFocusInset, kFocusInset, -kFocusInset, -kFocusInset);
        Outline(inner, painter);
    }
}

// The current tab also has a bar.
void OutlineTab(const QStyleOption &option, QPainter *painter) {
    Outline(option, painter);
    MarkFocus(option, painter);
    if (IsHighContrast(option.palette) && option.state.testFlag(QStyle::State_Selected)) {
        QRect bar = option.rect;
        bar.setHeight(kBarHeight);
        painter->fillRect(bar, option.palette.color(QPalette::WindowText));
    }
}

// The base style's dot of a selected radio button is grey.
void OutlineCircle(const QStyleOption &option, QPainter *painter) {
    if (!IsHighContrast(option.palette)) {
        return;
    }
    const QColor color = option.palette.color(QPalette::WindowText);
    const QRectF circle = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(color);
    painter->drawEllipse(circle);
    if (option.state.testFlag(QStyle::State_On)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(color);
        painter->drawEllipse(circle.center(), circle.width() / 4, circle.height() / 4);
    }
    painter->restore();
}

} // namespace

void ContrastStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                  const QWidget *widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (std::ranges::find(kOutlined, element) != kOutlined.end()) {
        Outline(*option, painter);
    } else if (element == PE_IndicatorRadioButton) {
        OutlineCircle(*option, painter);
    }
}

void ContrastStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                const QWidget *widget) const {
    const auto *const item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element == CE_MenuItem && item != nullptr && IsHighContrast(option->palette) &&
        option->state.testFlag(State_Selected)) {
        QStyleOptionMenuItem chosen(*item); // the style takes the icon for light ground
        const int side = pixelMetric(PM_SmallIconSize, option, widget);
        chosen.icon =
            QIcon(chosen.icon.pixmap({side, side}, painter->device()->devicePixelRatioF(), QIcon::Selected));
        QProxyStyle::drawControl(element, &chosen, painter, widget);
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_PushButtonBevel) {
        Outline(*option, painter);
        MarkFocus(*option, painter);
    } else if (element == CE_TabBarTabShape) {
        OutlineTab(*option, painter);
    }
}

void ContrastStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                       QPainter *painter, const QWidget *widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox) {
        Outline(*option, painter);
        MarkFocus(*option, painter);
    }
    if (control == CC_ScrollBar) {
        QStyleOption slider(*option);
        slider.rect = subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget);
        Outline(slider, painter);
    }
    if (control == CC_Slider && IsHighContrast(option->palette)) {
        QStyleOption groove(*option);
        QStyleOption handle(*option);
        groove.rect = subControlRect(CC_Slider, option, SC_SliderGroove, widget);
        handle.rect = subControlRect(CC_Slider, option, SC_SliderHandle, widget);
        painter->save();
        painter->setClipRegion(QRegion(groove.rect) - QRegion(handle.rect));
        Outline(groove, painter);
        painter->restore();
        OutlineCircle(handle, painter);
        MarkFocus(*option, painter);
    }
}

void UseContrastStyle() {
    if (QApplication::style()->name().compare(QLatin1String("fusion"), Qt::CaseInsensitive) == 0) {
        QApplication::setStyle(new ContrastStyle); // the application's from now on
    }
}

} // namespace drevix
