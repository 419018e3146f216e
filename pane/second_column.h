// A second column at the right of a list's or a menu's items: one word about each.
#pragma once

#include <QStyledItemDelegate>

namespace drevix {

// The text of the second column, and whether it is bold.
inline constexpr int kSecondColumnRole = Qt::UserRole + 20;
inline constexpr int kSecondBoldRole = Qt::UserRole + 21;

class SecondColumnDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    // With room for both.
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace drevix
