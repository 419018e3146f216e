#include "pane/callout_painter.h"

#include "pane/look.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace drevix {
namespace {

constexpr qreal kNameSize = 0.9;
constexpr qreal kThinLine = 1;
constexpr qreal kThickLine = 2;
constexpr qreal kDotRadius = 2.5;
constexpr qreal kPressedShare = 0.15; // of Base on its way to Highlight
constexpr qreal kLineShare = 0.5;     // of Text on its way to Base

QRectF Inset(const QRectF &frame, qreal by) {
    return frame.adjusted(by, by, -by, -by);
}

} // namespace

qreal WidestName(const QFont &font, const QStringList &names) {
    const QFontMetricsF metrics(ScaledFont(font, kNameSize));
    qreal widest = 0;
    for (const QString &name : names) {
        widest = std::max(widest, metrics.horizontalAdvance(name));
    }
    return widest;
}

CalloutPainter::CalloutPainter(const QFont &font, QPalette palette, CalloutForm form)
    : fNameFont(ScaledFont(font, kNameSize)), fActionFont(font), fPalette(std::move(palette)), fForm(form),
      fUnit(UnitOf(EmOf(font))) {}

void CalloutPainter::PaintLeader(QPainter &painter, const Callout &callout, const ControlState &state) const {
    const bool isStrong = state.isChosen || state.isPressed;
    const QColor color = isStrong                   ? fPalette.color(QPalette::Highlight)
                         : IsHighContrast(fPalette) ? fPalette.color(QPalette::Text)
                                                    : Blend(fPalette.color(QPalette::Text),
                                                            fPalette.color(QPalette::Base), kLineShare);
    painter.setPen(QPen(color, isStrong ? kThickLine : kThinLine, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(callout.leader.data(), static_cast<int>(callout.leader.size()));
    painter.setPen(QPen(fPalette.color(QPalette::Base), kThinLine));
    painter.setBrush(color);
    painter.drawEllipse(callout.leader.back(), kDotRadius + kThinLine, kDotRadius + kThinLine);
}

void CalloutPainter::PaintCallout(QPainter &painter, const Callout &callout, const ControlText &text,
                                  const ControlState &state) const {
    PaintGround(painter, callout.frame, state);
    PaintTexts(painter, callout, text, state);
    if (state.isFocused) { // seen on every ground, as one of its two colours always stands out
        PaintFocusRing(painter, Inset(callout.frame, -kRingWidth / 2), fPalette);
    }
}

void CalloutPainter::PaintGround(QPainter &painter, const QRectF &frame, const ControlState &state) const {
    const QColor highlight = fPalette.color(QPalette::Highlight);
    const qreal outline = state.isPressed ? kThickLine : state.isPointedAt ? kThinLine : 0;
    if (state.isChosen) {
        painter.setBrush(highlight);
    } else if (state.isPressed) {
        painter.setBrush(Blend(fPalette.color(QPalette::Base), highlight, kPressedShare));
    } else {
        painter.setBrush(Qt::NoBrush);
    }
    const QColor line = state.isChosen ? fPalette.color(QPalette::Text) : highlight;
    painter.setPen(outline > 0 ? QPen(line, outline) : QPen(Qt::NoPen));
    painter.drawRoundedRect(Inset(frame, outline / 2), kRadius, kRadius);
}

QColor CalloutPainter::TextColor(const ControlState &state, bool isDim) const {
    return state.isChosen ? fPalette.color(QPalette::HighlightedText)
           : isDim        ? DimColor(fPalette)
                          : fPalette.color(QPalette::Text);
}

// In one line the name is never cut, but the action may be; the tool tip has its whole text.
bool CalloutPainter::HasRoom(const Callout &callout, const ControlText &text) const {
    QFont actionFont = fActionFont;
    actionFont.setBold(text.isChanged);
    return QFontMetricsF(actionFont).horizontalAdvance(text.action) <= callout.frame.width() - 3 * fUnit;
}

void CalloutPainter::PaintTexts(QPainter &painter, const Callout &callout, const ControlText &text,
                                const ControlState &state) const {
    QFont actionFont = fActionFont;
    actionFont.setBold(text.isChanged);
    const QFontMetricsF nameMetrics(fNameFont);
    const QFontMetricsF actionMetrics(actionFont);
    const QString form =
        state.isPressed ? QCoreApplication::translate("Callout", "%1 · pressed") : QStringLiteral("%1");
    QRectF nameRoom = callout.frame.adjusted(1.5 * fUnit, 0, -1.5 * fUnit, 0);
    QRectF actionRoom = nameRoom;
    // If both do not fit, the name is cut rather than the news.
    const qreal nameWidth = nameRoom.width() - nameMetrics.horizontalAdvance(form.arg(QString()));
    const QString shownName = form.arg(nameMetrics.elidedText(text.name, Qt::ElideRight, nameWidth));
    if (fForm == CalloutForm::TwoLines) {
        const qreal gap = fUnit / 2; // for letters with a mark above
        const qreal lines = nameMetrics.height() + gap + actionMetrics.height();
        nameRoom.setTop(callout.frame.top() + (callout.frame.height() - lines) / 2);
        nameRoom.setHeight(nameMetrics.height());
        actionRoom.setTop(nameRoom.bottom() + gap);
        actionRoom.setHeight(actionMetrics.height());
    } else {
        const qreal taken = nameMetrics.horizontalAdvance(shownName) + 2 * fUnit;
        actionRoom.setWidth(std::max(0.0, actionRoom.width() - taken));
    }
    const QString action = actionMetrics.elidedText(text.action, Qt::ElideRight, actionRoom.width());
    if (fForm == CalloutForm::OneLine && callout.isLeft) {
        actionRoom.moveRight(nameRoom.right());
        nameRoom.setRight(actionRoom.right() - actionMetrics.horizontalAdvance(action) - 2 * fUnit);
    } else if (fForm == CalloutForm::OneLine) {
        actionRoom.moveLeft(nameRoom.left() + nameMetrics.horizontalAdvance(shownName) + 2 * fUnit);
    }
    const int side =
        Qt::AlignVCenter | Qt::TextSingleLine | (callout.isLeft ? Qt::AlignRight : Qt::AlignLeft);
    painter.setFont(fNameFont);
    painter.setPen(TextColor(state, true));
    painter.drawText(nameRoom, side, shownName);
    painter.setFont(actionFont);
    painter.setPen(TextColor(state, text.isNothing));
    painter.drawText(actionRoom, side, action);
}

} // namespace drevix
