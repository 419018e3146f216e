#include "pane/elided_label.h"

#include "pane/pane_text.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace drevix {
namespace {

constexpr int kLeastCharacters = 8;

} // namespace

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText); // a name is no markup
}

QSize ElidedLabel::minimumSizeHint() const {
    const int least = fontMetrics().averageCharWidth() * kLeastCharacters;
    return {std::min(least, sizeHint().width()), sizeHint().height()};
}

void ElidedLabel::SetShortText(const QString &text) {
    fShortText = text;
    update();
}

QString ElidedLabel::ShownText() const {
    const int room = contentsRect().width();
    const bool isShort = !fShortText.isEmpty() && fontMetrics().horizontalAdvance(text()) > room;
    return fontMetrics().elidedText(isShort ? fShortText : text(), Qt::ElideRight, room);
}

bool ElidedLabel::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        const QString shown = ShownText() == text() ? QString() : PlainToolTip(text());
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), shown, this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const int place = static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment()));
    style()->drawItemText(&painter, contentsRect(), place, palette(), isEnabled(), ShownText(),
                          foregroundRole());
}

} // namespace drevix
