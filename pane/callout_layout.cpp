#include "pane/callout_layout.h"

#include "pane/control_map.h"
#include "pane/look.h"

#include <algorithm>
#include <span>

namespace drevix {
namespace {

constexpr qreal kSide = ControlMap::kSide;

// In em.
constexpr qreal kGap = 1.2; // between picture and callouts
constexpr qreal kTwoLineWidth = 9;
constexpr qreal kOneLineWidth = 12.5;
constexpr qreal kWidest = 18;
constexpr qreal kTwoLineHeight = 2.3;
constexpr qreal kOneLineHeight = 1.4;
constexpr qreal kLeastAction = 11.3; // room for an action beside its name: a key and scrolling, in German
constexpr qreal kActionOfName = 1.5; // as long as usual, where names tell how long a language's words are
constexpr qreal kLargestPicture = 30;
constexpr qreal kSmallestPicture = 10.5; // that callouts may leave

// In units of the drawing: beside the body, where a line bends towards its control.
constexpr qreal kLeftElbow = -4;
constexpr qreal kRightElbow = kSide + 4;

// One callout in the drawing's units: its preferred place, and the path of its line to its control. In this
// order from top to bottom no two lines cross, and none passes over another control's button.
struct CalloutRow {
    int index; // in kPictureSlots
    qreal level;
    qreal elbow;
    QPointF dot;
};
constexpr auto kLeftRows = std::to_array<CalloutRow>({
    {5, 19, 124, {138, 52}},          // push up
    {1, 59, kLeftElbow, {73, 60}},    // turn left
    {3, 100, kLeftElbow, {84, 107}},  // push left
    {7, 141, kLeftElbow, {147, 135}}, // push released
    {2, 182, kLeftElbow, {134, 149}}, // turn released
    {13, 222, kLeftElbow, {27, 222}}, // V
    {14, 263, kLeftElbow, {61, 265}}, // P
    {9, 304, 110, {121.5, 249}},      // tuner left
});
constexpr auto kRightRows = std::to_array<CalloutRow>({
    {0, 24, kRightElbow, {246, 56}},    // turn right
    {4, 82, kRightElbow, {237, 107}},   // push right
    {6, 140, kRightElbow, {188, 193}},  // push down
    {11, 182, kRightElbow, {301, 195}}, // III
    {12, 223, kRightElbow, {284, 238}}, // II
    {10, 264, kRightElbow, {252, 271}}, // I
    {8, 304, 210, {198.5, 249}},        // tuner right
});
static_assert(kLeftRows.size() + kRightRows.size() == kCallouts);
constexpr int kMostRows = static_cast<int>(kLeftRows.size());

qreal HeightOf(CalloutForm form, qreal em) {
    return form == CalloutForm::TwoLines ? kTwoLineHeight * em
                                         : std::max(kOneLineHeight * em, qreal{kLeastTarget});
}

// Callouts are at least a pixel apart, and u from the stage's edges.
qreal LeastHeight(CalloutForm form, qreal em) {
    return kMostRows * (HeightOf(form, em) + 1) + UnitOf(em);
}

// The centres of a side's callouts: as close to their preferred places as their heights and the stage allow.
std::array<qreal, kMostRows> Levels(std::span<const CalloutRow> rows, const QRectF &picture,
                                    qreal stageHeight, qreal height, qreal margin) {
    std::array<qreal, kMostRows> levels{};
    qreal least = margin + height / 2;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const qreal wanted = picture.top() + rows[i].level * picture.height() / kSide;
        levels[i] = std::max(wanted, least);
        least = levels[i] + height + 1;
    }
    qreal most = stageHeight - margin - height / 2;
    for (std::size_t i = rows.size(); i-- > 0;) {
        levels[i] = std::min(levels[i], most);
        most = levels[i] - height - 1;
    }
    return levels;
}

struct Columns {
    qreal width; // of each of the two
    qreal side;  // of the picture between them
};

Columns FitColumns(const QSizeF &stage, const CalloutSizes &sizes, CalloutForm form) {
    const qreal em = sizes.em;
    const qreal outside = 2 * (kGap * em + 2 * UnitOf(em));
    const qreal action = kActionOfName * sizes.widestName + 3 * UnitOf(em);
    qreal width = std::max(kTwoLineWidth * em, action);
    if (form == CalloutForm::OneLine) {
        const qreal between = 5 * UnitOf(em); // the two texts, and around them
        const qreal wanted = std::max(kOneLineWidth * em, sizes.widestName + kLeastAction * em + between);
        const qreal most = (stage.width() - outside - kSmallestPicture * em) / 2;
        width = std::min(wanted, std::max(most, kOneLineWidth * em));
    }
    const qreal side =
        std::min({stage.height() - UnitOf(em), stage.width() - outside - 2 * width, kLargestPicture * em});
    return {std::min((stage.width() - outside - side) / 2, std::max(kWidest * em, width)), side};
}

void PlaceSide(StageLayout &layout, std::span<const CalloutRow> rows, const QSizeF &stage, qreal width,
               qreal em, bool isLeft) {
    const QRectF &picture = layout.picture;
    const qreal height = HeightOf(layout.form, em);
    const qreal inner = isLeft ? picture.left() - kGap * em : picture.right() + kGap * em;
    const auto levels = Levels(rows, picture, stage.height(), height, UnitOf(em) / 2);
    const auto onStage = [&](const QPointF &p) { return picture.topLeft() + p * picture.width() / kSide; };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Callout &callout = layout.callouts[static_cast<std::size_t>(rows[i].index)];
        const QPointF elbow(onStage({rows[i].elbow, 0}).x(), levels[i]);
        callout.frame = {isLeft ? inner - width : inner, levels[i] - height / 2, width, height};
        callout.isLeft = isLeft;
        callout.leader = {QPointF(inner, levels[i]), elbow, onStage(rows[i].dot)};
    }
}

} // namespace

QSizeF MinimumStage(qreal em) {
    return {40 * em, std::max(12.6 * em, LeastHeight(CalloutForm::OneLine, em))};
}

StageLayout LayOutStage(const QSizeF &stage, const CalloutSizes &sizes) {
    const qreal em = sizes.em;
    const QSizeF room = stage.expandedTo(MinimumStage(em));
    StageLayout layout{};
    layout.form =
        room.height() < LeastHeight(CalloutForm::TwoLines, em) ? CalloutForm::OneLine : CalloutForm::TwoLines;
    const Columns columns = FitColumns(room, sizes, layout.form);
    layout.picture = {(room.width() - columns.side) / 2, (room.height() - columns.side) / 2, columns.side,
                      columns.side};
    PlaceSide(layout, kLeftRows, room, columns.width, em, true);
    PlaceSide(layout, kRightRows, room, columns.width, em, false);
    return layout;
}

} // namespace drevix
