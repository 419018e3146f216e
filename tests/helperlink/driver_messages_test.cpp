#include "helperlink/driver_messages.h"

#include "helperlink/device_text.h"
#include "platform/bus/process_names.h"
#include "platform/bus/sd_event_loop.h"
#include "platform/bus/session_bus.h"
#include "settings/pascal_strings.h"
#include "tests/support/private_bus.h"
#include "tests/support/testing.h"

#include <csignal>

namespace drevix::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

class Peer : public TestProcess {
  public:
    explicit Peer(const std::string &mode, const std::string &name = "DrevixHelper",
                  const std::string &seconds = "0")
        : TestProcess({"/usr/bin/python3", DREVIX_PEER, name, mode, seconds}) {}
    int Requests() {
        const std::string output = Output();
        return static_cast<int>(std::ranges::count(output, '\n'));
    }
};

OSErr Find(const char *name, ProcessSerialNumber *psn = nullptr) {
    Str255 pascal{};
    getPascalString(name, pascal.data());
    return FindNamedProcess(pascal.data(), psn);
}

class DriverMessages : public testing::Test {
  protected:
    DriverMessages() {
        gBusTimes = BusTimes();
        gBusTimes.betweenAttempts = milliseconds(1);
        gBusTimes.firstListOutside = milliseconds(5000); // a busy machine
        fBus.emplace(fFolder.Path());
        InstallAppleEventHandlers(&fList);
    }
    ~DriverMessages() override {
        RemoveAppleEventHandlers();
        LeaveSessionBus();
    }
    // Serves what comes until the condition holds.
    static bool Until(const std::function<bool()> &condition, milliseconds most = milliseconds(10000)) {
        const Clock::time_point end = Clock::now() + most;
        while (!condition() && Clock::now() < end) {
            WaitForAppleEvents(milliseconds(20));
        }
        return condition();
    }
    bool IsAsked(Peer &peer) {
        return GetConnectedDevices(&fList) == noErr && Until([&] { return peer.Requests() > 0; });
    }

    ScratchFolder fFolder;
    std::optional<PrivateBus> fBus;
    DeviceList fList{};
};

TEST(ProcessNames, EveryNameComesBackAndNoOtherBusNameIsOne) {
    const std::string helper = "com.halcyra.drevix.Process.Drevix_20tarnix_20Helper.p12";
    EXPECT_EQ(BusNameOfProcess({12, "Drevix tarnix Helper"}), helper);
    EXPECT_EQ(BusNameOfProcess({7, "3\xC3\xA9_a"}), "com.halcyra.drevix.Process._33_c3_a9_5fa.p7");
    for (const std::string name : {"DrevixHelper", "3\xC3\xA9_a", "_", ".p4", "a.b"}) {
        NamedProcess found{};
        ASSERT_TRUE(ParseBusName(BusNameOfProcess({4000000000, name}), &found)) << name;
        EXPECT_EQ(found.name, name);
        EXPECT_EQ(found.id, 4000000000);
    }
    for (const std::string wrong :
         {"", ".p5", "..p5", ".A", ".A.", ".A.p", ".A.p0", ".A.p05", ".A.p5x", ".A.p4294967296", ".A.q5",
          ".A_2.p5", ".A_20.p5.", ".A_41.p5", ".3A.p5", ".A_2F.p5", "es.A.p5"}) {
        NamedProcess found{1, "kept"};
        EXPECT_FALSE(ParseBusName("com.halcyra.drevix.Process" + wrong, &found)) << wrong;
        EXPECT_EQ(found.name, "kept") << wrong;
    }
}

TEST_F(DriverMessages, ProcessesAreFoundByNameLowestIdFirst) {
    const Peer first("nothing");
    const Peer accent("nothing", "Dr\xC3\xA9vixHelper");
    auto second = std::make_unique<Peer>("nothing", "drevixHELPER");
    ProcessSerialNumber psn{9, 9};
    EXPECT_EQ(Find("Drevix", &psn), procNotFound);
    EXPECT_EQ(psn, (ProcessSerialNumber{9, 9}));
    ASSERT_EQ(Find("dREVIXhELPER", &psn), noErr);
    EXPECT_EQ(psn, (ProcessSerialNumber{0, static_cast<std::uint32_t>(std::min(first.Id(), second->Id()))}));
    ASSERT_EQ(Find("DR\xC3\x89VIXHELPER", &psn), noErr);
    EXPECT_EQ(psn.low, static_cast<std::uint32_t>(accent.Id()));
    ProcessInfoRec wrong{60, nullptr};
    EXPECT_EQ(GetProcessInformation(psn, &wrong), paramErr);
    // Ends are noticed, and one more process of the name is left.
    second.reset();
    EXPECT_TRUE(Until([&] {
        return Find("DrevixHelper", &psn) == noErr && psn.low == static_cast<std::uint32_t>(first.Id());
    }));
    // On a bus that was started anew, too, at once: only reading tells that the old one is dead.
    fBus.reset();
    fBus.emplace(fFolder.Path());
    const Peer third("nothing");
    EXPECT_EQ(Find("DrevixHelper"), noErr);
    // Without a bus none is, at once.
    fBus.reset();
    const milliseconds start = OwnTime();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(GetConnectedDevices(&fList), procNotFound);
    }
    EXPECT_LT(OwnTime() - start, milliseconds(500));
}

TEST_F(DriverMessages, AnswersAreStoredAsFarAsTheyGo) {
    struct Row {
        const char *mode;
        int count;             // of the stored list; the list held 7 before
        std::uint16_t version; // of its first device; it was 0x7777 before
        const char *seconds = "0";
        bool hasHandler = true;
    };
    for (const Row &row : {Row{"answer", 1, 0x0105}, Row{"late", 1, 0x0105, "1.2"}, Row{"long", 1, 0x0105},
                           Row{"short", 2, 0x7777}, Row{"empty", 7, 0x7777}, Row{"type", 7, 0x7777},
                           Row{"null", 7, 0x7777}, Row{"malformed", 7, 0x7777}, Row{"fail", 7, 0x7777},
                           Row{"die", 7, 0x7777}, Row{"answer", 7, 0x7777, "0", false}}) {
        const Peer peer(row.mode, "DrevixHelper", row.seconds);
        fList.count = 7;
        std::memset(fList.device, 0x77, sizeof fList.device);
        if (!row.hasHandler) {
            RemoveAppleEventHandlers();
        }
        ASSERT_TRUE(Until([] { return Find("DrevixHelper") == noErr; })) << row.mode;
        EXPECT_EQ(GetConnectedDevices(&fList), noErr) << row.mode;
        // What was just asked cannot have been answered yet: the answer comes from the event loop.
        EXPECT_EQ(fList.count, 7) << row.mode;
        Until([&] { return fList.count != 7; }, milliseconds(row.count == 7 ? 700 : 10000));
        EXPECT_EQ(fList.count, row.count) << row.mode;
        EXPECT_EQ(fList.device[0].productVers, row.version) << row.mode;
        if (row.version == 0x0105) {
            EXPECT_EQ(DeviceSerialText(fList.device[0]), "07060504030201") << row.mode;
            EXPECT_EQ(DeviceNameText(fList.device[0].productName), "Drevix Veltrana") << row.mode;
        }
    }
}

TEST_F(DriverMessages, AnswersThatNobodyAskedForAreNotTaken) {
    Peer helper("late", "DrevixHelper", "1");
    bool isRegistered = false;
    RegisterProcess("Panel", [&](const ProcessSerialNumber *) { isRegistered = true; });
    ASSERT_TRUE(Until([&] { return isRegistered; }));
    ASSERT_TRUE(IsAsked(helper));
    helper.Signal(SIGSTOP); // answers after the stranger, however slow that is
    fList.count = 7;
    const Peer stranger("attack", "DrevixHelper");
    Until([] { return false; }, milliseconds(300));
    EXPECT_EQ(fList.count, 7);
    helper.Signal(SIGCONT);
    EXPECT_TRUE(Until([&] { return fList.count == 1; })) << "the helper's own answer must still count";
}

// 30 MB in one answer: no turn of the event loop is long, and the rest of the program's life goes on as before.
TEST_F(DriverMessages, HugeAnswer_HoldsNobodyUp) {
    Peer helper("huge");
    ASSERT_TRUE(IsAsked(helper));
    milliseconds longest{0};
    for (const milliseconds start = OwnTime(); OwnTime() - start < milliseconds(2000);) {
        const milliseconds before = OwnTime();
        WaitForAppleEvents(milliseconds(20));
        longest = std::max(longest, OwnTime() - before);
    }
    // The sanitizer's realloc copies, and the bus library grows what it reads in small steps.
    EXPECT_LT(longest, milliseconds(kIsSanitized ? 120'000 : 1000));
    EXPECT_EQ(fList.count, 0);
    EXPECT_EQ(Find("DrevixHelper"), noErr);
}

TEST_F(DriverMessages, RequestsReachTheProcessOfThatNameOnly) {
    Peer helper("nothing");
    Peer companion("nothing", "Drevix tarnix Helper");
    EXPECT_EQ(GetConnectedDevices(nullptr), paramErr);
    EXPECT_EQ(RequestDriverPrefsUpdate(kTarnixName.data()), procNotFound);
    EXPECT_EQ(RequestDriverPrefsUpdate(kTarnixHelperName.data()), noErr);
    EXPECT_TRUE(Until([&] { return companion.Output() == "PLZWPLZU\n"; }));
    EXPECT_EQ(helper.Output(), "");
}

TEST_F(DriverMessages, AProcessThatOwesAnAnswerIsAskedAgainOnlyAfterAWhile) {
    gBusTimes.firstSilence = milliseconds(400);
    Peer peer("nothing");
    const Clock::time_point start = Clock::now();
    for (const int due : {0, 400, 1200}) { // milliseconds; seen later by a busy machine, never sooner
        const int before = peer.Requests();
        Until([&] { return GetConnectedDevices(&fList) != noErr || peer.Requests() > before; });
        EXPECT_GE(Clock::now() - start, milliseconds(due));
    }
    EXPECT_EQ(peer.Requests(), 3) << "the next time would be 2.8 s";
}

struct Holdings {
    std::ptrdiff_t descriptors = 0;
    std::int64_t kilobytes = 0;

    Holdings() {
        const fs::directory_iterator entries("/proc/self/fd");
        descriptors = std::distance(begin(entries), end(entries));
        std::ifstream("/proc/self/statm") >> kilobytes >> kilobytes; // the second number is that in memory
        kilobytes *= 4;
    }
    void ExpectNoGrowth(int moreDescriptors) const {
        const Holdings now;
        EXPECT_LE(now.descriptors, descriptors + moreDescriptors);
        // The sanitizer keeps what was freed.
        EXPECT_TRUE(kIsSanitized || now.kilobytes - kilobytes < 512) << now.kilobytes - kilobytes;
    }
};

// An event loop that asks for the devices at every tick, and measures how late each question ends: a wait in the
// question or in a turn of the loop delays it.
class TickingLoop {
  public:
    explicit TickingLoop(DeviceList *list) : fList(list) {}
    ~TickingLoop() { LeaveSessionBus(); } // while there is a loop to leave
    void Run(int ticks) {
        fLeft = ticks;
        Wait();
        fLoop.Run();
    }
    // The count in the next answer; 7 if there is none.
    int Answer() {
        fList->count = 7;
        for (int turns = 0; fList->count == 7 && turns < 300; ++turns) {
            Run(20);
        }
        return fList->count;
    }
    // A wait for a process or a bus would show at every tick, or for seconds.
    void ExpectNoStall() const {
        EXPECT_LE(fStalls, 2);
        EXPECT_LT(fLongest, milliseconds(500));
    }

  private:
    void Wait() {
        fExpected = OwnTime() + kInterval;
        fTimer.Watch(-1, 0, kInterval);
    }
    void Tick() {
        std::ignore = GetConnectedDevices(fList);
        const milliseconds late = OwnTime() - fExpected;
        fLongest = std::max(fLongest, late);
        fStalls += late > milliseconds(50) ? 1 : 0;
        if (--fLeft == 0) {
            fLoop.End();
        } else {
            Wait();
        }
    }

    static constexpr milliseconds kInterval{5};
    DeviceList *fList;
    SdEventLoop fLoop;
    LoopWatch fTimer{[this] { Tick(); }};
    milliseconds fExpected{};
    milliseconds fLongest{0};
    int fStalls = 0;
    int fLeft = 0;
};

TEST_F(DriverMessages, AHungHelperHoldsUpNothingAndGetsNoPileOfRequests) {
    TickingLoop loop(&fList);
    Peer peer("answer");
    EXPECT_EQ(loop.Answer(), 1);
    const int before = peer.Requests();
    peer.Signal(SIGSTOP);
    loop.Run(50);
    const Holdings holdings;
    loop.Run(1000);
    loop.ExpectNoStall();
    holdings.ExpectNoGrowth(0);
    peer.Signal(SIGCONT);
    loop.Run(100);
    EXPECT_LE(peer.Requests() - before, 103) << "only these last ticks' requests, and two from before";
    EXPECT_EQ(loop.Answer(), 1);
}

TEST_F(DriverMessages, ABusThatHangsHoldsUpNothing) {
    TickingLoop loop(&fList);
    fBus->Daemon().Signal(SIGSTOP);
    loop.Run(300);
    fBus->Daemon().Signal(SIGCONT);
    const Peer peer("answer");
    EXPECT_EQ(loop.Answer(), 1);
    fBus->Daemon().Signal(SIGSTOP);
    loop.Run(300);
    loop.ExpectNoStall();
    fBus->Daemon().Signal(SIGCONT);
}

TEST_F(DriverMessages, ABusThatDiesAndComesBackIsUsedAgain) {
    TickingLoop loop(&fList);
    loop.Run(20);
    const auto restart = [&](int times) {
        for (int i = 0; i < times; ++i) {
            fBus.reset();
            loop.Run(2);
            fBus.emplace(fFolder.Path());
            loop.Run(4);
        }
    };
    restart(20);
    const Holdings holdings;
    restart(200);
    holdings.ExpectNoGrowth(1); // connected or not, as it happens
    const Peer peer("answer");
    EXPECT_EQ(loop.Answer(), 1);
    loop.ExpectNoStall();
}

} // namespace
} // namespace drevix::test
