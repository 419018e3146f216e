#include "device/held_keys.h"
#include "device/repeat.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

TEST(Repeat, Times_AreCountedFromThePress) {
    static const std::tuple<std::uint16_t, int, std::int64_t, std::int64_t> kRows[] = {
        {6, 100, 1, 100'000'000}, // nanoseconds
        {6, 100, 1'000'000, 100'000'000'000'000},
        {1, 100, 1, 16'666'666},
        {1, 100, 6'000'000, 100'000'000'000'000},
        {6, 255, 255, 10'000'000'000},
        {6, 7, 7, 10'000'000'000},
        {1, 255, 3, 50'000'000},   // a tick at least
        {6, 0, 1, 10'000'000'000}, // as 1
        {65535, 1, 600, 65'535'000'000'000'000},
    };
    for (const auto &[ticks, speed, n, expected] : kRows) {
        const SteadyTime pressed{nanoseconds{12345}};
        EXPECT_EQ((RepetitionTime(pressed, ticks, speed, n) - pressed).count(), expected)
            << ticks << ' ' << speed << ' ' << n;
    }
}

ActionPlan Plan(Holding holding, std::uint16_t scanCode = 30) {
    return {SendKeys{{scanCode, kControlModifier}}, holding, 6, false};
}

// Plays "+1" (a Down of slot 1), "-1", "*1" (three steps), "~250" (milliseconds pass, what is due is taken as soon as
// it is), ">250" (they pass, and the loop is late), "end", "gone" (the source) and "other" (another source).
std::string Play(const std::string &words, Holding holding, int speed = 100) {
    HeldActions held;
    std::vector<Deed> deeds;
    SteadyTime now{};
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        const int number = std::isdigit(word.back()) != 0 ? std::stoi(word.substr(1)) : 0;
        const auto slot = static_cast<SlotIndex>(number);
        const auto take = [&](ControlPhase phase, int times) {
            held.Take(7, {slot, phase, times}, Plan(holding), speed, now, &deeds);
        };
        if (word[0] == '+') {
            take(ControlPhase::Down, 1);
        } else if (word[0] == '-') {
            take(ControlPhase::Up, 1);
        } else if (word[0] == '*') {
            take(ControlPhase::Step, 3);
        } else if (word[0] == '~') {
            const SteadyTime end = now + milliseconds(number);
            for (auto next = held.NextTime(); next && *next <= end; next = held.NextTime()) {
                held.TakeTime(*next, &deeds);
            }
            now = end;
        } else if (word[0] == '>') {
            now += milliseconds(number);
            held.TakeTime(now, &deeds);
        } else if (word == "gone") {
            held.EndSource(7, &deeds);
        } else if (word == "other") {
            held.EndSource(8, &deeds);
        } else {
            held.EndAll(&deeds);
        }
    }
    std::string text;
    for (const Deed &deed : deeds) {
        text += text.empty() ? "" : " ";
        text += deed.kind == DeedKind::Act ? "act" : deed.kind == DeedKind::Hold ? "hold" : "letgo";
        text += std::holds_alternative<DoNothing>(deed.plan.step) ? "-nothing" : "";
        text += deed.times != 1 ? "*" + std::to_string(deed.times) : "";
    }
    return text;
}

TEST(Repeat, HeldControls_BecomeDeeds) {
    static const std::tuple<const char *, Holding, const char *, const char *> kRows[] = {
        {"once", Holding::Once, "+1 ~5000 -1 *2", "act act*3"},
        {"repeats until it goes up", Holding::Repeats, "+1 ~250 -1 ~5000", "act act act"},
        {"two controls", Holding::Repeats, "+1 ~50 +2 ~60 -1 ~50 -2", "act act act act"},
        {"a late loop leaves out", Holding::Repeats, "+1 >1050 ~49 ~1 -1", "act act act"},
        {"ends with the source", Holding::Repeats, "+1 gone ~5000 -1", "act"},
        {"another source ends", Holding::Repeats, "+1 other ~150 -1", "act act"},
        {"kept", Holding::Kept, "+1 ~5000 -1 -1", "hold letgo"},
        {"kept, pressed twice", Holding::Kept, "+1 +1 -1", "hold letgo hold letgo"},
        {"kept until the end", Holding::Kept, "+1 +2 end -1 end", "hold hold letgo letgo"},
        {"kept, the device is gone", Holding::Kept, "+1 gone -1", "hold letgo"},
        {"a step holds nothing", Holding::Kept, "*1", "act*3"},
        {"a long press", Holding::LongPress, "+1 ~999 ~1 ~5000 -1", "act"},
        {"too short", Holding::LongPress, "+1 ~999 -1 ~5000", "act-nothing"},
        {"not even pressed", Holding::LongPress, "*1", "act-nothing"},
    };
    for (const auto &[what, holding, words, deeds] : kRows) {
        EXPECT_EQ(Play(words, holding), deeds) << what;
    }
    EXPECT_EQ(Play("+1 ~250 -1", Holding::Repeats, 200), "act act act act act act");
}

TEST(HeldKeys, SharedKeys_StayDownUntilTheLastChordIsReleased) {
    constexpr KeyChord kCtrlShiftA{30, kControlModifier | kShiftModifier};
    constexpr KeyChord kCtrlB{48, kControlModifier};
    HeldKeys keys;
    std::vector<KeyStep> steps;
    const auto taken = [&steps] {
        std::string text;
        for (const KeyStep &step : std::exchange(steps, {})) {
            text += (text.empty() ? "" : " ") + std::string(step.isDown ? "+" : "-") +
                    std::to_string(step.scanCode);
        }
        return text;
    };
    keys.Press(kCtrlShiftA, &steps);
    EXPECT_EQ(taken(), "+29 +42 +30");
    keys.Press(kCtrlB, &steps);
    keys.Release(kCtrlB, &steps);
    EXPECT_EQ(taken(), "+48 -48");
    keys.Press(kCtrlShiftA, &steps);
    keys.Release(kCtrlShiftA, &steps);
    EXPECT_EQ(taken(), "-30 +30");
    EXPECT_FALSE(keys.IsNoneDown());
    keys.Release(kCtrlShiftA, &steps);
    EXPECT_EQ(taken(), "-30 -42 -29");
    keys.Release(kCtrlShiftA, &steps);
    keys.Press({kMostScanCode + 1, kControlModifier}, &steps);
    keys.Release({kMostScanCode + 1, kControlModifier}, &steps);
    EXPECT_EQ(taken(), "");
    keys.Press(kCtrlShiftA, &steps);
    keys.Press(kCtrlShiftA, &steps);
    steps.clear();
    keys.ReleaseAll(&steps);
    EXPECT_EQ(taken(), "-30 -29 -42");
    EXPECT_TRUE(keys.IsNoneDown());
}

} // namespace
} // namespace drevix
