#include "pane/second_column.h"

#include "pane/look.h"

#include <QPainter>

#include <algorithm>

namespace drevix {
namespace {

QFont SecondFont(const QFont &font, const QModelIndex &index) {
    QFont second = font;
    second.setBold(index.data(kSecondBoldRole).toBool());
    return second;
}

} // namespace

void SecondColumnDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const {
    QStyledItemDelegate::paint(painter, option, index);
    const bool isChosen = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setFont(SecondFont(option.font, index));
    painter->setPen(isChosen ? option.palette.color(QPalette::HighlightedText) : DimColor(option.palette));
    const int margin = option.fontMetrics.height() / 2;
    painter->drawText(option.rect.adjusted(margin, 0, -margin, 0), Qt::AlignRight | Qt::AlignVCenter,
                      index.data(kSecondColumnRole).toString());
    painter->restore();
}

QSize SecondColumnDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QFontMetrics metrics(SecondFont(option.font, index));
    const int second = metrics.horizontalAdvance(index.data(kSecondColumnRole).toString());
    size.setWidth(size.width() + second + 3 * option.fontMetrics.height());
    size.setHeight(std::max(size.height(), option.fontMetrics.height() * 3 / 2));
    return size;
}

} // namespace drevix
