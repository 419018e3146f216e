// A menu that shows its choice and opens on a click or key.
#pragma once

#include <QComboBox>
#include <QStandardItemModel>

namespace drevix {

// Unlike the combo box that it is, it never goes from choice to choice while it is closed: choosing an action
// empties its control's settings and may take the action from another control, so what lies on the way must
// not be chosen. Arrow keys and letters open it instead, and the wheel is left to what lies around it.
class PopUpMenu : public QComboBox {
    Q_OBJECT

  public:
    using QComboBox::QComboBox;

    // As wide as minimumContentsLength() letters and an icon, whatever the items say. The policy of that name would make the
    // list that opens at once, for each menu of a window.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

    // What paints the items of the open list, from its first opening on. Owned here.
    void SetDelegate(QAbstractItemDelegate *delegate);
    // A second column in the open menu: what an item stands for now, bold where that is not the usual.
    struct SecondColumn {
        QString text;
        bool isBold = false;
    };
    void ShowSecondColumn();
    void SetSecondColumn(int item, const SecondColumn &column);
    void showPopup() override;

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

  private:
    QAbstractItemDelegate *fDelegate = nullptr; // still to be set
    bool fHasSecondColumn = false;
};

// The items of a menu that was not given a model of another kind.
[[nodiscard]] QStandardItemModel *ModelOf(const QComboBox *menu);

} // namespace drevix
