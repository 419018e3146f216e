// Where the picture of the device and its fifteen callouts lie: geometry alone, without a window.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <array>

namespace drevix {

inline constexpr int kCallouts = 15;

// What a control is called and does, beside the picture, and the line that leads from there to the control.
struct Callout {
    QRectF frame;
    bool isLeft; // of the picture: its text ends at the line
    std::array<QPointF, 3>
        leader; // from the callout level to its elbow, and straight to its dot on the control
};

// The name over the action; or, where that is too high, beside it.
enum class CalloutForm : std::uint8_t { TwoLines, OneLine };

struct StageLayout {
    QRectF picture; // the drawing's square
    CalloutForm form;
    std::array<Callout, kCallouts> callouts; // in the order of kPictureSlots
};

// What the texts need, in the units of the stage.
struct CalloutSizes {
    qreal em;         // the height of a line
    qreal widestName; // the widest name of a control
};

// The least stage that has room for the picture and all callouts.
[[nodiscard]] QSizeF MinimumStage(qreal em);
// Lays out a stage. The callouts lie within it and apart, and no two lines cross. A stage below the minimum gets
// the layout of the minimum, of which it shows what it can.
[[nodiscard]] StageLayout LayOutStage(const QSizeF &stage, const CalloutSizes &sizes);

} // namespace drevix
