// Draws an application in the list and in the side bar: its icon, its name, and the state of its settings.
#pragma once

#include <QStyledItemDelegate>

namespace drevix {

class TargetDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    // A row that is no record: in the side bar a heading or an application to add; in the pop-up menu a
    // command or a separator.
    enum class Place : bool { SideBar, PopUp };
    TargetDelegate(Place place, QObject *parent) : QStyledItemDelegate(parent), fPlace(place) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // Where a row has its button for adding settings for its application.
    [[nodiscard]] static QRect AddRect(const QRect &row, const QFont &font);

  Q_SIGNALS:
    // That button was clicked.
    void addClicked(const QModelIndex &index);

  protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

  private:
    Place fPlace;
};

} // namespace drevix
