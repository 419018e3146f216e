#include "helper/control_actions.h"

#include "document/settings_document.h"
#include "platform/base/status.h"
#include "settings/action_commands.h"
#include "tests/settings/settings_files.h"
#include "util/items/items_folder.h"

#include <linux/input-event-codes.h>

namespace drevix::test {
namespace {

// Writes down what it is asked for: "+29 +44 -44 -29 up*2 close".
class RecordingDesktop final : public Desktop {
  public:
    [[nodiscard]] int Descriptor() const override { return -1; }
    [[nodiscard]] bool Take() override { return true; }
    [[nodiscard]] const FrontWindow &Front() const override { return fFront; }
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down) override {
        return Note((down ? "+" : "-") + std::to_string(scanCode));
    }
    [[nodiscard]] bool Scroll(ScrollDirection direction, int steps) override {
        return Note((direction == ScrollDirection::Up ? "up*" : "other*") + std::to_string(steps));
    }
    [[nodiscard]] bool Ask(WindowRequest request) override {
        return request == WindowRequest::Close && Note("close");
    }
    [[nodiscard]] bool Flush() override { return true; }
    [[nodiscard]] std::string Taken() { return std::exchange(fNotes, {}); }

  private:
    bool Note(const std::string &note) {
        fNotes += (fNotes.empty() ? "" : " ") + note;
        return true;
    }
    std::string fNotes;
    FrontWindow fFront;
};

constexpr SlotIndex kLeft = 0, kTuner = 7, kV = 16, kP = 17, kI = 18, kII = 19, kIII = 20;

struct Set {
    SlotIndex slot;
    ActionCommand command;
    std::uint16_t delay = 0;
    std::uint16_t modifiers = 0;
};
AppPrefs RecordOf(OSType signature, const char *name, std::initializer_list<Set> slots) {
    AppPrefs record = MakeRecord(signature, name);
    record.device[0].navSpeed = 100;
    for (const Set &set : slots) {
        ActionSlot &slot = record.device[0].action[set.slot];
        ResetActionSlot(slot);
        slot.command = set.command;
        slot.keyCode = 0; // A
        slot.delay = set.delay;
        slot.modifiers = set.modifiers;
    }
    return record;
}

class Actions : public ::testing::Test {
  protected:
    Actions() {
        AppPrefs off = RecordOf(kOther, "off", {{kI, kActionKeystroke}});
        off.active = 0;
        fFolder.WriteDefaults({
            RecordOf(kGlobalSignature, "",
                     {{kI, 180}, {kTuner, 224, 0, kControlModifier}, {kLeft, 224}, {kII, 999}}),
            RecordOf(kOther, "gimp",
                     {{kI, kActionKeystroke, kHeldDelay, kControlModifier},
                      {kII, 103},
                      {kIII, 34},
                      {kTuner, kActionUseGlobal},
                      {kLeft, kActionKeystroke, 6},
                      {kV, kActionModeSwitch},
                      {kP, 69}}),
            off,
        });
        std::string problem;
        EXPECT_TRUE(fActions.LoadSettings(&problem)) << problem;
        fSender.SetDesktop(&fDesktop);
    }
    // What a turn of events does: "+20" is down, "-20" up, "20" steps once, "20*3" three times, "front:NAME" another
    // window, "~100" a pause of milliseconds.
    std::string Play(const std::string &sent) {
        std::istringstream words(sent);
        for (std::string word; words >> word;) {
            const std::size_t star = word.find('*');
            const int times = star == word.npos ? 1 : std::stoi(word.substr(star + 1));
            if (word.starts_with("front:")) {
                fActions.SetFront({word.substr(6), {}, {}, {}, 0});
            } else if (word[0] == '~') {
                fNow += std::chrono::milliseconds(std::stoi(word.substr(1)));
                fActions.TakeTime(fNow);
            } else {
                const auto phase = word[0] == '+'   ? ControlPhase::Down
                                   : word[0] == '-' ? ControlPhase::Up
                                                    : ControlPhase::Step;
                const std::string slot = word.substr(phase == ControlPhase::Step ? 0 : 1);
                fActions.Take(1, {static_cast<SlotIndex>(std::stoi(slot)), phase, times}, fNow);
            }
        }
        return fDesktop.Taken();
    }

    SettingsFolder fFolder;
    RecordingDesktop fDesktop;
    std::vector<std::string> fProblems;
    std::string fTold;
    bool fIsAsked = false;
    std::vector<std::string> fStarted;
    ActionSender fSender{{[this](const auto &command, const auto & /*ended*/) {
                              fStarted = command;
                              return noErr;
                          },
                          [this](SessionRequest /*request*/) { fIsAsked = true; },
                          [](PlayerRequest /*request*/) { return false; },
                          [this](const std::string &problem) { fProblems.push_back(problem); }},
                         false};
    FrontSettings fSettings{fFolder.path, fFolder.resources};
    ControlActions fActions{
        fSettings, fSender, [] { return KeyboardCharacters{}; },
        [this](SlotIndex /*slot*/, const std::string &what, int /*times*/) { fTold = what; }};
    SteadyTime fNow{};
};

TEST_F(Actions, Item_IsOpenedWhileItIsThere) {
    AppPrefs record = RecordOf(kGlobalSignature, "", {{kI, kActionOpenItem}});
    const std::string item = fFolder.Path("item");
    fs::create_directory(item);
    ASSERT_EQ(MakeDrevixItem(item, &record.device[0].action[kI].data), noErr);
    fFolder.WriteDefaults({record});
    std::string problem;
    ASSERT_TRUE(fActions.LoadSettings(&problem)) << problem;
    for (const bool isThere : {true, false}) {
        fStarted.clear();
        Play("+18 -18");
        EXPECT_EQ(fStarted.empty() ? "" : fStarted.back(), isThere ? item : "");
        fs::remove(item);
    }
}

TEST_F(Actions, GoByTheWindowInFront) {
    static const std::tuple<const char *, const char *, const char *> kRows[] = {
        {"+18 -18", "close", "close the window"},
        {"7*3", "+29 up*3 -29", "scroll up with ctrl"},
        {"+19 -19", "", "nothing"},
        {"front:org.gimp.GIMP +18", "+29 +30", "keys ctrl+KEY_A"},
        {"-18", "-30 -29", "keys ctrl+KEY_A"},
        {"front:gimp 7", "+29 up*1 -29", "scroll up with ctrl"},
        {"+20 -20", "", "nothing: the companion does not accept menu commands"},
        {"+17", "", "nothing: this desktop cannot"},
        {"+0 ~50 ~100 -0 ~200", "+30 -30 +30 -30", "keys KEY_A"},
        {"+16 -16 +0 -0", "up*1", "scroll up"}, // in the ring mode of the global record
        {"+16 -16 +0 -0", "+30 -30", "keys KEY_A"},
        {"front:off +18 -18", "", "nothing: the device is switched off here"},
    };
    for (const auto &[sent, done, told] : kRows) {
        EXPECT_EQ(Play(sent), done) << sent;
        EXPECT_EQ(fTold, told) << sent;
    }
    EXPECT_TRUE(fSender.AreKeysUp());
}

TEST_F(Actions, HeldKeysGoUpAtEveryEnd) {
    std::ignore = Play("front:gimp");
    const std::vector<std::function<void()>> ends = {
        [this] {
            fActions.SetFront({"other", {}, {}, {}, 0});
        },
        [this] { fActions.EndSource(1); },
        [this] { fActions.EndAll(); },
        [this] { fActions.SetQuiet(true); },
        [this] { fActions.SetLocked(true); },
        [this] {
            std::string problem;
            EXPECT_TRUE(fActions.LoadSettings(&problem)) << problem;
        },
    };
    for (std::size_t i = 0; i < ends.size(); ++i) {
        fActions.SetQuiet(false);
        fActions.SetLocked(false);
        EXPECT_EQ(Play("front:gimp +18"), "+29 +30") << i;
        ends[i]();
        EXPECT_EQ(Play("-18"), "-30 -29") << i;
        EXPECT_TRUE(fSender.AreKeysUp()) << i;
    }
}

TEST_F(Actions, AreKeptBackWhereTheyWouldHarm) {
    EXPECT_EQ(Play("front:gimp +19 ~500 -19"), "");
    EXPECT_FALSE(fIsAsked);
    EXPECT_EQ(fTold, "nothing: hold the control down for a second");
    EXPECT_EQ(Play("+19 ~1001 -19"), "");
    EXPECT_TRUE(fIsAsked);
    fActions.SetLocked(true);
    EXPECT_EQ(Play("+18 -18"), "");
    EXPECT_EQ(fTold, "nothing: the session is locked");
    fActions.SetLocked(false);
    fSender.SetDesktop(nullptr);
    EXPECT_EQ(Play("+18 -18"), "");
    EXPECT_EQ(fTold, "nothing: there is no desktop to send it to");
    fSender.SetDesktop(&fDesktop);
    // A settings file that is damaged changes nothing.
    WriteWhole(fFolder.path, std::string(700, 'x'));
    std::string problem;
    EXPECT_FALSE(fActions.LoadSettings(&problem));
    EXPECT_EQ(Play("+18 -18"), "+29 +30 -30 -29");
}

} // namespace
} // namespace drevix::test
