// A window that tells what it gets, for tests: "focus", "down CODE STATE" and "up CODE STATE" for keys, "button CODE" for
// the wheel. Usage: key_window CLASS, or key_window without one, which prints how many keys are down and ends.
#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <xcb/xcb.h>

namespace {

int CountKeysDown(xcb_connection_t *connection) {
    const std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)> reply(
        xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr), &std::free);
    int count = 0;
    for (const std::uint8_t byte : std::span(reply->keys)) {
        count += static_cast<int>(std::bitset<8>(byte).count());
    }
    return count;
}

void Show(xcb_connection_t *connection, const std::string &name) {
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                 XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK, &events);
    const std::string both = name + '\0' + name + '\0';
    for (const auto &[property, text] : {std::pair{XCB_ATOM_WM_CLASS, both}, {XCB_ATOM_WM_NAME, name}}) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }
    xcb_map_window(connection, window);
    xcb_flush(connection);
}

void Tell(const xcb_generic_event_t *event) {
    const auto *key = reinterpret_cast<const xcb_key_press_event_t *>(event);
    switch (event->response_type & 0x7F) {
    case XCB_FOCUS_IN:
        std::puts("focus");
        break;
    case XCB_KEY_PRESS:
        std::printf("down %d %d\n", key->detail, key->state);
        break;
    case XCB_KEY_RELEASE:
        std::printf("up %d %d\n", key->detail, key->state);
        break;
    case XCB_BUTTON_PRESS:
        std::printf("button %d\n", key->detail);
        break;
    default:
        break;
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv) {
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        return 1;
    }
    if (argc < 2) {
        std::printf("%d\n", CountKeysDown(connection));
        return 0;
    }
    Show(connection, argv[1]);
    while (xcb_generic_event_t *event = xcb_wait_for_event(connection)) {
        Tell(event);
        std::free(event);
    }
}
