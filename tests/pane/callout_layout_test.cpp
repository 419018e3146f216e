// The stage's geometry at many sizes, fonts and lengths of names.
#include "pane/callout_layout.h"
#include "pane/control_map.h"
#include "tests/support/testing.h"

#include <QLineF>

#include <cmath>

namespace drevix::test {
namespace {

// The round buttons of the drawing, in its units: index in kPictureSlots, middle, radius.
constexpr struct {
    std::size_t index;
    QPointF middle;
    qreal radius;
} kDrawnButtons[] = {{13, {48, 222}, 21},
                     {14, {82, 266}, 21},
                     {10, {234, 274}, 19},
                     {12, {267, 242}, 19},
                     {11, {283, 199}, 19}};

std::vector<QLineF> LinesOf(const Callout &callout) {
    return {{callout.leader[0], callout.leader[1]}, {callout.leader[1], callout.leader[2]}};
}

bool Cross(const Callout &a, const Callout &b) {
    for (const QLineF &one : LinesOf(a)) {
        for (const QLineF &other : LinesOf(b)) {
            if (one.intersects(other) == QLineF::BoundedIntersection) {
                return true;
            }
        }
    }
    return false;
}

qreal Distance(const QPointF &point, const QLineF &line) {
    const QPointF along = line.p2() - line.p1();
    const qreal share = QPointF::dotProduct(point - line.p1(), along) / QPointF::dotProduct(along, along);
    return QLineF(point, line.pointAt(std::clamp(share, 0.0, 1.0))).length();
}

void ExpectGood(const StageLayout &layout, const QSizeF &stage) {
    const QRectF whole({0, 0}, stage);
    const qreal scale = layout.picture.width() / ControlMap::kSide;
    EXPECT_TRUE(whole.contains(layout.picture));
    for (std::size_t i = 0; i < kCallouts; ++i) {
        const Callout &callout = layout.callouts[i];
        EXPECT_TRUE(whole.contains(callout.frame)) << i;
        EXPECT_GE(callout.frame.height(), 24) << "a target";
        EXPECT_TRUE(layout.picture.contains(callout.leader[2])) << i;
        for (const auto &[index, middle, radius] : kDrawnButtons) {
            for (const QLineF &line : LinesOf(callout)) {
                const qreal distance = Distance(layout.picture.topLeft() + middle * scale, line);
                EXPECT_TRUE(index == i || distance > radius * scale) << i << " passes over " << index;
            }
        }
        for (std::size_t j = 0; j < i; ++j) {
            EXPECT_FALSE(callout.frame.intersects(layout.callouts[j].frame)) << i << " and " << j;
            EXPECT_FALSE(Cross(callout, layout.callouts[j])) << i << " and " << j;
        }
        EXPECT_FALSE(callout.frame.intersects(layout.picture)) << i;
    }
}

TEST(CalloutLayout, EverySizeFontAndLanguage_KeepsCalloutsApartAndLinesUncrossed) {
    bool areBothFormsMet[2] = {};
    for (const qreal em : {18.0, 15.0, 29.0}) {
        for (const qreal widestName : {4.6, 7.4}) { // English, German
            for (const QSizeF &size : {QSizeF(40, 12.6), QSizeF(43, 17.8), QSizeF(43, 22.7), QSizeF(41, 18),
                                       QSizeF(80, 14), QSizeF(42, 50), QSizeF(94, 48), QSizeF(10, 3)}) {
                SCOPED_TRACE(::testing::Message()
                             << em << ' ' << widestName << ' ' << size.width() << 'x' << size.height());
                const QSizeF stage = size * em;
                const StageLayout layout = LayOutStage(stage, {em, widestName * em});
                ExpectGood(layout, stage.expandedTo(MinimumStage(em)));
                areBothFormsMet[static_cast<std::size_t>(layout.form)] = true;
                EXPECT_GE(layout.picture.width(), 10 * em) << "the picture can be seen";
            }
        }
    }
    EXPECT_TRUE(areBothFormsMet[0] && areBothFormsMet[1]);
}

} // namespace
} // namespace drevix::test
