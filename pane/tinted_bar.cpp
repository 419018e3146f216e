#include "pane/tinted_bar.h"

#include <QPainter>
#include <QStyle>

namespace drevix {
namespace {

constexpr int kStripeWidth = 4; // pixels

} // namespace

void TintedBar::SetTint(Tint tint) {
    fTint = tint;
    update();
}

void TintedBar::SetLines(Qt::Edges edges) {
    fLines = edges;
    update();
}

void TintedBar::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), GroundColor(palette(), fTint));
    if (fTint != Tint::None) {
        const QRect left(0, 0, kStripeWidth, height());
        painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), left), StripeColor(palette(), fTint));
    }
    const QColor line = HairlineColor(palette());
    if (fLines.testFlag(Qt::TopEdge)) {
        painter.fillRect(0, 0, width(), 1, line);
    }
    if (fLines.testFlag(Qt::BottomEdge)) {
        painter.fillRect(0, height() - 1, width(), 1, line);
    }
}

} // namespace drevix
