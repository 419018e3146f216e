// A keyboard of the kernel's, with a pipe in its place.
#include "platform/windows/desktop_uinput.h"
#include "tests/support/testing.h"

#include <array>
#include <linux/input.h>
#include <sys/socket.h>

namespace drevix {
namespace {

using Event = std::tuple<int, int, int>;

std::vector<Event> Sent(int from) {
    std::array<input_event, 256> events{};
    const ssize_t size = read(from, events.data(), sizeof events);
    std::vector<Event> sent;
    for (std::size_t i = 0; size > 0 && i < static_cast<std::size_t>(size) / sizeof events.front(); ++i) {
        sent.emplace_back(events.at(i).type, events.at(i).code, events.at(i).value);
    }
    return sent;
}

TEST(DesktopUinput, KeysAndWheel_AreReportsOfTheKernel) {
    std::array<int, 2> pipes{};
    std::array<int, 2> compositors{};
    ASSERT_EQ(pipe(pipes.data()), 0);
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, compositors.data()), 0);
    const SystemDescriptor sent(pipes[0]);
    SystemDescriptor compositor(compositors[1]);
    auto desktop = MakeUinputDesktop(std::make_unique<KernelKeyboard>(SystemDescriptor(pipes[1])),
                                     SystemDescriptor(compositors[0]));
    const Event end{EV_SYN, SYN_REPORT, 0};

    ASSERT_TRUE(desktop->Key(KEY_LEFTCTRL, true) && desktop->Key(KEY_A, true) && desktop->Key(KEY_A, false));
    ASSERT_TRUE(desktop->Take() && desktop->Flush());
    EXPECT_EQ(Sent(sent.Get()),
              (std::vector<Event>{
                  {EV_KEY, KEY_LEFTCTRL, 1}, end, {EV_KEY, KEY_A, 1}, end, {EV_KEY, KEY_A, 0}, end}));
    ASSERT_TRUE(desktop->Scroll(ScrollDirection::Up, 1) && desktop->Scroll(ScrollDirection::Left, 1));
    ASSERT_TRUE(desktop->Flush());
    EXPECT_EQ(Sent(sent.Get()), (std::vector<Event>{{EV_REL, REL_WHEEL_HI_RES, 120},
                                                    {EV_REL, REL_WHEEL, 1},
                                                    end,
                                                    {EV_REL, REL_HWHEEL_HI_RES, -120},
                                                    {EV_REL, REL_HWHEEL, -1},
                                                    end}));
    EXPECT_FALSE(desktop->Key(KEY_RESERVED, true) || desktop->Key(248, true));
    EXPECT_FALSE(desktop->Ask(WindowRequest::Close));

    compositor.Reset(); // keys would go to the console now
    EXPECT_FALSE(desktop->Take());
    desktop.reset();
    EXPECT_EQ(Sent(sent.Get()), (std::vector<Event>{{EV_KEY, KEY_LEFTCTRL, 0}, end})) << "let go in the end";
}

} // namespace
} // namespace drevix
