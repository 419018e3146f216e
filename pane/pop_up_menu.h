// A menu that shows its choice and opens on a click or key.
#pragma once

#include <QComboBox>

namespace drevix {

// Unlike the combo box that it is, it never goes from choice to choice while it is closed: choosing an action
// empties its control's settings and may take the action from another control, so what lies on the way must
// not be chosen. Arrow keys and letters open it instead, and the wheel is left to what lies around it.
class PopUpMenu : public QComboBox {
    Q_OBJECT

  public:
    using QComboBox::QComboBox;

  protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace drevix
