#include "pane/hyperlink.h"

#include "pane/look.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

#include <algorithm>
#include <array>
#include <cmath>

namespace drevix {
namespace {

QColor ColorOf(LinkLook look) {
    const StyledText::Color color = getHyperlink({}, look).foreground;
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue));
}

} // namespace

QColor HyperlinkColor(LinkLook look, const QColor &background) {
    const QColor color = ColorOf(look);
    const double leastContrast = look == LinkLook::Normal ? 4.5 : 3; // it was read before it was pressed
    const bool isDark = ContrastOf(background, Qt::white) > ContrastOf(background, Qt::black);
    constexpr int kShades = 20;
    for (int i = 0; i < kShades; ++i) {
        const QColor shade = Blend(color, isDark ? Qt::white : Qt::black, qreal{1} * i / kShades);
        if (ContrastOf(shade, background) >= leastContrast) {
            return shade;
        }
    }
    return isDark ? Qt::white : Qt::black;
}

QColor HyperlinkColor(LinkLook look, const QPalette &palette, QPalette::ColorRole background) {
    return IsHighContrast(palette) ? palette.color(QPalette::Link)
                                   : HyperlinkColor(look, palette.color(background));
}

LinkButton::LinkButton(const QString &title, QWidget *parent) : QPushButton(title, parent) {
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

QSize LinkButton::sizeHint() const {
    const int margin = fontMetrics().height() / 3;
    return (fontMetrics().size(Qt::TextShowMnemonic, text()) + QSize(2 * margin, 2 * margin))
        .expandedTo({0, kLeastTarget});
}

void LinkButton::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    QFont linkFont = font();
    linkFont.setUnderline(isEnabled());
    painter.setFont(linkFont);
    const LinkLook look = isDown() ? LinkLook::Alternate : LinkLook::Normal;
    painter.setPen(isEnabled() ? HyperlinkColor(look, palette(), backgroundRole())
                               : palette().color(QPalette::Disabled, QPalette::WindowText));
    const QString shown =
        painter.fontMetrics().elidedText(text(), Qt::ElideRight, width(), Qt::TextShowMnemonic);
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextHideMnemonic, shown);
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        frame.backgroundColor = palette().color(backgroundRole());
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
    }
}

} // namespace drevix
