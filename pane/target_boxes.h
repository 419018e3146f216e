// Check boxes and radio buttons that take clicks in the full height of a target: the style's own area is only
// as high as the text.
#pragma once

#include "pane/look.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QStyle>

namespace drevix {

template <class Button>
class TallButton : public Button {
  public:
    using Button::Button;

    [[nodiscard]] QSize sizeHint() const override { return Button::sizeHint().expandedTo({0, kLeastTarget}); }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    [[nodiscard]] bool hitButton(const QPoint &place) const override {
        const QRect used(0, 0, sizeHint().width(), this->height());
        return QStyle::visualRect(this->layoutDirection(), this->rect(), used).contains(place);
    }
};

using CheckBox = TallButton<QCheckBox>;
using RadioButton = TallButton<QRadioButton>;

} // namespace drevix
