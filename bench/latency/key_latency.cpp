// Measures how long a key takes from a device's event, written to a pipe, to a window of an X server, for several programs
// that read pipes, by turns. Usage: key_latency TIMES PIPE...    prints the times of each pipe in microseconds, one line each
// Usage: key_latency --copy PIPE    is the least that such a program can be: it sends each key that it reads by XTEST.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <memory>
#include <poll.h>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace {

using Clock = std::chrono::steady_clock;
using Event = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;

constexpr int kKeycodeOfF5 = KEY_F5 + 8;
constexpr int kTimeToCome = 5000; // ms
constexpr std::chrono::milliseconds kBetween{2};

int Copy(const char *pipe) {
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const int from = open(pipe, O_RDONLY);
    input_event event{};
    while (read(from, &event, sizeof event) == sizeof event) {
        if (event.type == EV_KEY) {
            const auto kind = static_cast<std::uint8_t>(event.value != 0 ? XCB_KEY_PRESS : XCB_KEY_RELEASE);
            xcb_test_fake_input(connection, kind, kKeycodeOfF5, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            xcb_flush(connection);
        }
    }
    return 0;
}

// The window that has the keyboard; a window manager is not there.
xcb_connection_t *ShowWindow() {
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK, &events);
    xcb_map_window(connection, window);
    xcb_flush(connection);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    xcb_set_input_focus(connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(connection);
    return connection;
}

bool WaitFor(xcb_connection_t *connection, int kind) {
    pollfd look = {.fd = xcb_get_file_descriptor(connection), .events = POLLIN, .revents = 0};
    for (;;) {
        const Event event(xcb_poll_for_event(connection), &std::free);
        if (event != nullptr && (event->response_type & 0x7F) == kind) {
            return true;
        }
        if (event == nullptr && poll(&look, 1, kTimeToCome) <= 0) {
            return false;
        }
    }
}

void Send(int pipe, int value) {
    input_event events[2]{};
    events[0].type = EV_KEY;
    events[0].code = BTN_2;
    events[0].value = value;
    if (write(pipe, events, sizeof events) != sizeof events) {
        std::exit(1);
    }
}

int Measure(int times, std::span<char *> names) {
    xcb_connection_t *connection = ShowWindow();
    std::vector<int> pipes;
    std::vector<std::vector<double>> taken(names.size());
    for (const char *name : names) {
        pipes.push_back(open(name, O_WRONLY));
    }
    for (int time = 0; time < times; ++time) {
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            const auto begin = Clock::now();
            Send(pipes[i], 1);
            if (!WaitFor(connection, XCB_KEY_PRESS)) {
                std::fprintf(stderr, "no key came by %s\n", names[i]);
                return 1;
            }
            taken[i].push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
            Send(pipes[i], 0);
            WaitFor(connection, XCB_KEY_RELEASE);
            std::this_thread::sleep_for(kBetween); // each is back in its wait
        }
    }
    for (const auto &row : taken) {
        for (const double microseconds : row) {
            std::printf("%.1f ", microseconds);
        }
        std::printf("\n");
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (argc == 3 && std::string_view(argv[1]) == "--copy") {
        return Copy(argv[2]);
    }
    return argc < 3 ? 2 : Measure(std::atoi(argv[1]), arguments.subspan(2));
}
