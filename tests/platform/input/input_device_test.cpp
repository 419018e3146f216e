#include "platform/input/input_device.h"
#include "platform/input/input_devices.h"

#include "platform/input/input_codes.h"
#include "tests/support/testing.h"

#include <array>
#include <cstdarg>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

namespace drevix::test {
namespace {

bool gKernelAnswers = false;

// What the kernel would say of a device with keys BTN_0 (down) and 0x2FF, a dial, and the axis ABS_X; ABS_Y does
// not answer.
int AnswerAsKernel(unsigned number, char *to) {
    const auto setBit = [to](unsigned bit) { to[bit / 8] = static_cast<char>(1 << bit % 8); };
    const input_id id = {BUS_USB, 1, 2, 3};
    const input_absinfo axis = {9, -5, 5, 0, 0, 0};
    switch (number) {
    case _IOC_NR(EVIOCGID):
        std::memcpy(to, &id, sizeof id);
        return 0;
    case _IOC_NR(EVIOCGNAME(0)):
        std::strcpy(to, "Dial");
        return 5;
    case _IOC_NR(EVIOCGBIT(EV_KEY, 0)):
        setBit(0x2FF);
        [[fallthrough]];
    case _IOC_NR(EVIOCGKEY(0)):
        setBit(BTN_0);
        return 96;
    case _IOC_NR(EVIOCGBIT(EV_REL, 0)):
        setBit(REL_DIAL);
        return 2;
    case _IOC_NR(EVIOCGBIT(EV_ABS, 0)):
        to[0] = 3;
        return 8;
    case _IOC_NR(EVIOCGABS(ABS_X)):
        std::memcpy(to, &axis, sizeof axis);
        return 0;
    default:
        return -1;
    }
}

} // namespace
} // namespace drevix::test

// In place of the C library's: there are devices of a kernel in a guest only (scripts/guest_devices).
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    char *const to = va_arg(arguments, char *);
    va_end(arguments);
    return drevix::test::gKernelAnswers ? drevix::test::AnswerAsKernel(_IOC_NR(request), to)
                                        : static_cast<int>(::syscall(SYS_ioctl, descriptor, request, to));
}

namespace drevix::test {
namespace {

// A device with two buttons and an axis, behind a pipe.
class InputDeviceTest : public ::testing::Test {
  protected:
    InputDeviceTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_NONBLOCK), 0);
        fWriter.Reset(ends[1]);
        InputDescription description;
        description.keys.set(BTN_0).set(BTN_1);
        description.axes = {{ABS_X, 0, 255, 127}};
        fDevice =
            std::make_unique<InputDevice>(SystemDescriptor(ends[0]), description, [this](InputState *state) {
                state->keys.set(BTN_1);
                state->axes = {{ABS_X, 0, 255, 9}};
                return fKnowsState;
            });
    }

    // Sends events as bytes, but for the last `missing` of them.
    void Send(const std::vector<RawEvent> &events, std::size_t missing = 0) {
        for (const RawEvent &event : events) {
            input_event sent{};
            sent.type = event.type;
            sent.code = event.code;
            sent.value = event.value;
            fBytes.append(reinterpret_cast<const char *>(&sent), sizeof sent);
        }
        const auto size = static_cast<ssize_t>(fBytes.size() - missing);
        EXPECT_EQ(::write(fWriter.Get(), fBytes.data(), static_cast<std::size_t>(size)), size);
        fBytes.erase(0, static_cast<std::size_t>(size));
    }
    std::vector<RawEvent> Take(InputStatus status) {
        std::vector<RawEvent> events;
        EXPECT_EQ(fDevice->Take(&events), status);
        return events;
    }

    SystemDescriptor fWriter;
    std::unique_ptr<InputDevice> fDevice;
    std::string fBytes; // not sent yet
    bool fKnowsState = true;
};

constexpr RawEvent kPress{EV_KEY, BTN_0, 1};
constexpr RawEvent kPush{EV_ABS, ABS_X, 255};
constexpr RawEvent kReport{EV_SYN, SYN_REPORT, 0};
constexpr RawEvent kDropped{EV_SYN, SYN_DROPPED, 0};
using Events = std::vector<RawEvent>;

TEST_F(InputDeviceTest, Events_ComeWholeAndInOrder) {
    EXPECT_EQ(Take(InputStatus::Open), Events{});
    Send({kPress, kPush, kReport}, sizeof(input_event) + 5);
    EXPECT_EQ(Take(InputStatus::Open), Events{kPress});
    Send({});
    EXPECT_EQ(Take(InputStatus::Open), (Events{kPush, kReport}));
    Events many(2000, kPress);
    Send(many);
    EXPECT_EQ(Take(InputStatus::Open), many);
    Send({kPress});
    fWriter.Reset();
    EXPECT_EQ(Take(InputStatus::Open), Events{kPress});
    EXPECT_EQ(Take(InputStatus::Gone), Events{});
}

TEST_F(InputDeviceTest, LostEvents_AreReplacedByTheState) {
    const Events state = {kDropped, {EV_KEY, BTN_0, 0}, {EV_KEY, BTN_1, 1}, {EV_ABS, ABS_X, 9}, kReport};
    // What was queued behind the loss once came after the state, although it was older.
    Send({kPush, kDropped, kPress, kReport, {EV_ABS, ABS_X, 3}, kReport});
    Events expected = state;
    expected.insert(expected.begin(), kPush);
    EXPECT_EQ(Take(InputStatus::Open), expected);
    Send({kPress, kReport});
    EXPECT_EQ(Take(InputStatus::Open), (Events{kPress, kReport}));
    fKnowsState = false;
    Send({kDropped, kReport, kPress});
    EXPECT_EQ(Take(InputStatus::Gone), Events{});
}

TEST(InputDevice, Kernel_IsAskedForDescriptionAndState) {
    const ScratchFolder folder;
    const std::string path = folder.Path("event0");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    gKernelAnswers = true;
    std::unique_ptr<InputDevice> device;
    ASSERT_EQ(OpenInputDevice(path, &device), noErr);
    const InputDescription &found = device->Description();
    EXPECT_EQ(found.name + "|" + found.serial, "Dial|");
    EXPECT_EQ(found.vendor * 100 + found.product * 10 + found.version, 123);
    EXPECT_TRUE(found.keys.count() == 2 && found.keys[BTN_0] && found.keys[0x2FF]);
    EXPECT_TRUE(found.dials.count() == 1 && found.dials[REL_DIAL]);
    ASSERT_EQ(found.axes.size(), 1U);
    EXPECT_TRUE(found.axes[0].code == ABS_X && found.axes[0].least == -5 && found.axes[0].most == 5);

    const SystemDescriptor writer(::open(path.c_str(), O_WRONLY));
    input_event dropped{};
    dropped.code = SYN_DROPPED;
    Events events;
    ASSERT_EQ(::write(writer.Get(), &dropped, sizeof dropped), sizeof dropped);
    EXPECT_EQ(device->Take(&events), InputStatus::Open);
    EXPECT_EQ(events,
              (Events{kDropped, {EV_KEY, BTN_0, 1}, {EV_KEY, 0x2FF, 0}, {EV_ABS, ABS_X, 9}, kReport}));
    gKernelAnswers = false;
    ASSERT_EQ(::write(writer.Get(), &dropped, sizeof dropped), sizeof dropped);
    EXPECT_EQ(device->Take(&events), InputStatus::Gone);
}

TEST(InputDevice, WhatIsNoDevice_IsNotOpened) {
    const ScratchFolder folder;
    WriteWhole(folder.Path("file"), "");
    std::unique_ptr<InputDevice> device;
    EXPECT_EQ(OpenInputDevice(folder.Path("file"), &device), paramErr);
    EXPECT_EQ(OpenInputDevice(folder.Path("none"), &device), fnfErr);
    EXPECT_EQ(device, nullptr);
    EXPECT_FALSE(InputDevice(SystemDescriptor(::open("/dev/null", O_RDONLY)), {}).Grab());
}

TEST(InputCodes, NamesAndNumbers_LeadToEachOther) {
    EventCode event{};
    ASSERT_TRUE(FindEventCode("ABS_RZ", &event));
    EXPECT_EQ(event, (EventCode{EV_ABS, ABS_RZ}));
    ASSERT_TRUE(FindEventCode("BTN_A", &event)); // the second name of one
    EXPECT_EQ(EventCodeName(event), "BTN_SOUTH");
    EXPECT_FALSE(FindEventCode("KEY_MAX", &event));
}

TEST(InputDevices, ThatCome_AreToldWhateverHappensToTheirFolder) {
    const ScratchFolder folder;
    const std::string input = folder.Path("input");
    InputDevices devices(input);
    EXPECT_TRUE(devices.TakeNew().empty());
    fs::create_directory(input);
    WriteWhole(input + "/event3", ""); // before anyone has looked
    EXPECT_EQ(devices.TakeNew().at(0), input + "/event3");
    WriteWhole(input + "/mouse0", "");
    EXPECT_TRUE(devices.TakeNew().empty());
    fs::permissions(input + "/event3", fs::perms::owner_read);
    EXPECT_EQ(devices.TakeNew().at(0), input + "/event3");
    fs::remove_all(input);
    EXPECT_TRUE(devices.TakeNew().empty());
    fs::create_directory(input);
    WriteWhole(input + "/event12", "");
    EXPECT_EQ(devices.TakeNew().at(0), input + "/event12");
    // One that comes while the kernel's queue is full.
    WriteWhole(input + "/mouse1", "");
    WriteWhole(input + "/mouse2", "");
    int most = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
    for (int i = 0; i < most; ++i) {
        ::chmod((input + "/mouse" + (i % 2 == 0 ? "1" : "2")).c_str(), 0600);
    }
    WriteWhole(input + "/event13", "");
    EXPECT_EQ(devices.TakeNew().size(), 2U);
}

} // namespace
} // namespace drevix::test
