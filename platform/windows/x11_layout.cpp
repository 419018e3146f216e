#include "platform/windows/x11_layout.h"

// The header has a field of that name.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace drevix {

X11LayoutWatch::X11LayoutWatch(X11Link *link) {
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(link->Get(), &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    const auto usable = link->Await<xcb_xkb_use_extension_reply_t>(
        xcb_xkb_use_extension(link->Get(), XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION));
    if (usable == nullptr || usable->supported == 0) {
        return;
    }
    fEventCode = extension->first_event;
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr std::uint16_t kParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS;
    // Modifiers change with every keystroke and do not matter here.
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = XCB_XKB_NKN_DETAIL_KEYCODES | XCB_XKB_NKN_DETAIL_DEVICE_ID;
    details.newKeyboardDetails = details.affectNewKeyboard;
    details.affectState = XCB_XKB_STATE_PART_GROUP_STATE;
    details.stateDetails = details.affectState;
    xcb_xkb_select_events_aux(link->Get(), XCB_XKB_ID_USE_CORE_KBD, kEvents, 0, 0, kParts, kParts, &details);
}

void X11LayoutWatch::Notice(const xcb_generic_event_t &event) {
    if (fEventCode != 0 && event.response_type == fEventCode) {
        ++fChanges;
    }
}

} // namespace drevix
