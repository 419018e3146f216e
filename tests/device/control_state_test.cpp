#include "tests/device/control_words.h"

namespace drevix::test {
namespace {

constexpr Sensitivities kUsual{100, 100, 100, 100};
constexpr const char *kRing = "ringX axis=ABS_X\nringY axis=ABS_Y\nringZ axis=ABS_RZ\n";

TEST(ControlState, RawEvents_BecomeControlEvents) {
    // clang-format off
    static const struct {
        const char *what, *map, *sent, *expected;
    } kRows[] = {
        {"half of the way, and 0.6 of that", kRing, "ABS_X=191 | ABS_X=192 | ABS_X=166 |", "+ringRight"},
        {"the other way", kRing, "ABS_X=64 | ABS_X=63 | ABS_X=90 |", "+ringLeft -ringLeft ringXYRest"},
        {"nothing before the report", kRing, "ABS_X=255", ""},
        {"a trembling hand", kRing, "ABS_Y=192 | ABS_Y=190 | ABS_Y=193 | ABS_Y=189 | ABS_Y=192 |", "+ringDown"},
        {"from side to side", kRing, "ABS_X=0 | ABS_X=255 |", "+ringLeft -ringLeft ringXYRest +ringRight"},
        {"both must rest", kRing, "ABS_X=0 ABS_Y=0 | ABS_X=127 | ABS_Y=127 |",
         "+ringLeft +ringUp -ringLeft -ringUp ringXYRest"},
        {"round the corner", kRing, "ABS_X=0 | ABS_X=127 ABS_Y=0 |", "+ringLeft -ringLeft +ringUp"},
        {"no rest while the other axis is pushed", kRing, "ABS_Y=0 | ABS_X=0 | ABS_X=255 |",
         "+ringUp +ringLeft -ringLeft +ringRight"},
        {"the turn rests for itself", kRing, "ABS_X=0 ABS_RZ=350 | ABS_RZ=0 |", "+ringLeft +ringCW -ringCW ringZRest"},
        {"reverse", "ringX axis=ABS_X reverse=1", "ABS_X=0 |", "+ringRight"},
        {"the map's middle and travel", "ringX axis=ABS_X centre=10 travel=20", "ABS_X=19 | ABS_X=20 | ABS_X=0 |",
         "+ringRight -ringRight ringXYRest +ringLeft"},
        {"keys that the kernel repeats", "buttonI key=BTN_0", "BTN_0=1 BTN_0=2 BTN_0=1 BTN_0=0 BTN_0=0",
         "+buttonI -buttonI"},
        {"two keys of a control", "buttonI key=BTN_0\nbuttonI key=BTN_1", "BTN_0=1 BTN_1=1 BTN_0=0 BTN_1=0",
         "+buttonI -buttonI"},
        {"keys of the ring", "ringLeft key=BTN_0\nringUp key=BTN_1", "BTN_0=1 BTN_1=1 BTN_0=0 BTN_1=0",
         "+ringLeft +ringUp -ringLeft -ringUp ringXYRest"},
        {"a key of the tuner", "tunerCW key=BTN_0", "BTN_0=1 BTN_0=0", "tunerCW"},
        {"a dial", "tuner dial=REL_DIAL", "REL_DIAL=1 | REL_DIAL=-3 |", "tunerCW tunerCCW*3"},
        {"counts a step, until it turns back", "tuner dial=REL_DIAL per=4",
         "REL_DIAL=3 REL_DIAL=-3 REL_DIAL=-1 REL_DIAL=7 REL_DIAL=1", "tunerCCW tunerCW tunerCW"},
        {"50 steps at a time", "tuner dial=REL_DIAL", "REL_DIAL=40 REL_DIAL=-2000000000 ~0 REL_DIAL=2",
         "tunerCW*40 tunerCCW*10 tunerCW*2"},
        {"a counter goes round", "tuner dial=ABS_WHEEL wraps=256", "ABS_WHEEL=2 ABS_WHEEL=255", "tunerCW*8 tunerCCW*3"},
        {"a counter that does not", "tuner dial=ABS_WHEEL per=2", "ABS_WHEEL=2", "tunerCCW*50"},
        {"a dial on the ring", "ringZ dial=REL_DIAL rest=150", "REL_DIAL=1 ~149 REL_DIAL=1 ~149 REL_DIAL=-1 ~150",
         "ringCW ringCW ringCCW ringZRest"},
        {"a late loop", "ringZ dial=REL_DIAL rest=150", "REL_DIAL=1 >150 REL_DIAL=1", "ringCW ringZRest ringCW"},
        {"no rest while a dial turns", "ringZ dial=REL_DIAL\nringCW key=BTN_0", "REL_DIAL=1 BTN_0=1 BTN_0=0 ~150",
         "ringCW +ringCW -ringCW ringZRest"},
        {"lost events", "tuner dial=ABS_WHEEL wraps=256\nbuttonI key=BTN_0\nringX axis=ABS_X",
         "BTN_0=1 ABS_X=255 lost BTN_0=0 ABS_WHEEL=100 ABS_X=127 | ABS_WHEEL=101", "+buttonI -buttonI tunerCW"},
        {"unplugged", "ringX axis=ABS_X\nringZ dial=REL_DIAL\nbuttonI key=BTN_0",
         "ABS_X=0 | BTN_0=1 REL_DIAL=1 end ~500 BTN_0=0", "+ringLeft +buttonI ringCW -ringLeft -buttonI"},
    };
    // clang-format on
    for (const auto &row : kRows) {
        ControlState state(MakeMap(row.map), MakeDevice());
        EXPECT_EQ(Play(state, row.sent, kUsual), row.expected) << row.what;
    }
}

TEST(ControlState, Sensitivity_DecidesThresholdAndSteps) {
    static const std::tuple<int, int, int, const char *> kRows[] = {{0, 297, 298, ""},
                                                                    {100, 174, 175, "tunerCW*10"},
                                                                    {255, 34, 35, "tunerCW*25"},
                                                                    {50, 236, 237, "tunerCW*5"}};
    for (const auto &[sensitivity, lastAtRest, firstDown, tenCounts] : kRows) { // of 350
        const auto value = static_cast<std::uint8_t>(sensitivity);
        ControlState state(MakeMap("ringZ axis=ABS_RZ\ntuner dial=REL_DIAL"), MakeDevice());
        const std::string sent = "ABS_RZ=" + std::to_string(lastAtRest) + " | REL_DIAL=10";
        EXPECT_EQ(Play(state, sent, {1, 1, value, value}), tenCounts) << sensitivity;
        EXPECT_EQ(Play(state, "ABS_RZ=" + std::to_string(firstDown) + " |", {1, 1, value, value}), "+ringCW");
    }
    ControlState state(MakeMap("tuner dial=REL_DIAL"), MakeDevice());
    EXPECT_EQ(Play(state, "REL_DIAL=66 REL_DIAL=33 REL_DIAL=1", {1, 1, 1, 0}), "tunerCW");
}

TEST(ControlState, NextTime_IsWhenTheFirstDialRests) {
    ControlState state(MakeMap("ringZ dial=REL_DIAL rest=300\nringX dial=REL_X rest=100"), MakeDevice());
    EXPECT_FALSE(state.NextTime());
    EXPECT_EQ(Play(state, "REL_DIAL=1 REL_X=1", kUsual), "ringCW ringRight");
    EXPECT_EQ(state.NextTime(), SteadyTime{} + std::chrono::milliseconds(100));
    EXPECT_EQ(Play(state, "~100", kUsual), "ringXYRest");
    EXPECT_EQ(state.NextTime(), SteadyTime{} + std::chrono::milliseconds(300));
}

} // namespace
} // namespace drevix::test
