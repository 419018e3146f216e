// A menu that shows its choice and opens on a click or key.
#pragma once

#include <QComboBox>
#include <QStandardItemModel>

namespace drevix {

// Unlike a plain combo box, never changes its choice while it is closed: choosing an action clears its
// control's settings and may take the action from another control, so an action must not be chosen in
// passing. Arrow keys and letters open the menu instead, and the wheel scrolls what is around it.
class PopUpMenu : public QComboBox {
    Q_OBJECT

  public:
    using QComboBox::QComboBox;

    // As wide as minimumContentsLength() letters and an icon, whatever the items are. The size adjust policy
    // for that would create the list of every menu when the window opens.
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

    // Sets what paints the items of the list, from its first opening on. Owned here.
    void SetDelegate(QAbstractItemDelegate *delegate);
    // A second column in the open menu: the current meaning of an item, bold if it is not the default.
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

// The items of a menu that has the default model.
[[nodiscard]] QStandardItemModel *ModelOf(const QComboBox *menu);

} // namespace drevix
