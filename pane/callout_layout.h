// Lays out the picture of the device and its fifteen callouts: geometry alone, without a window.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <array>

namespace drevix {

inline constexpr int kCallouts = 15;

// A control's name and action beside the picture, and the line from there to the control.
struct Callout {
    QRectF frame;
    bool isLeft; // of the picture: its text ends at the line
    std::array<QPointF, 3>
        leader; // from the callout level to its elbow, and straight to its dot on the control
};

// The name above the action; or beside it, where there is not enough height.
enum class CalloutForm : std::uint8_t { TwoLines, OneLine };

struct StageLayout {
    QRectF picture; // the drawing's square
    CalloutForm form;
    std::array<Callout, kCallouts> callouts; // in the order of kPictureSlots
};

// The size of the texts, in the units of the stage.
struct CalloutSizes {
    qreal em;         // the height of a line
    qreal widestName; // the widest name of a control
};

// The smallest stage with room for the picture and all callouts.
[[nodiscard]] QSizeF MinimumStage(qreal em);
// Lays out a stage. The callouts lie within it and do not overlap, and no two lines cross. A stage below the
// minimum gets the layout of the minimum and shows the part that fits.
[[nodiscard]] StageLayout LayOutStage(const QSizeF &stage, const CalloutSizes &sizes);

} // namespace drevix
