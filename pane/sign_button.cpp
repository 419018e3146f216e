#include "pane/sign_button.h"

#include <QPainter>
#include <QStyleOptionToolButton>

namespace drevix {

void SignButton::setSign(QChar sign) {
    fSign = sign;
    update();
}

QSize SignButton::sizeHint() const {
    const int side = fontMetrics().height() * 7 / 4;
    return {side, side};
}

// Uses the current palette, so that it follows a change from light to dark.
void SignButton::paintEvent(QPaintEvent *event) {
    QToolButton::paintEvent(event); // frame and focus
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color =
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole());
    painter.setPen(QPen(color, fontMetrics().height() / 12.0));
    const double diameter = fontMetrics().height() * 1.2;
    QRectF circle(0, 0, diameter, diameter);
    circle.moveCenter(QRectF(rect()).center());
    painter.drawEllipse(circle);
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(rect(), Qt::AlignCenter, QString(fSign));
}

} // namespace drevix
