#include "platform/windows/x11_front.h"

#include "platform/base/utf8.h"
#include "platform/windows/process_program.h"

#include <algorithm>
#include <string_view>
#include <sys/utsname.h>
#include <utility>
#include <xcb/res.h>

namespace drevix {
namespace {

constexpr std::chrono::milliseconds kTimeToTell{200};
constexpr std::size_t kLongestChain = 8; // of dialogs of dialogs

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        if (TakeUtf8(&text) == kMalformedUtf8) {
            return false;
        }
    }
    return true;
}

// The protocol's own texts are ISO 8859-1, but not every program follows that.
std::string AsUtf8(std::string_view text) {
    if (IsUtf8(text)) {
        return std::string(text);
    }
    std::string converted;
    for (const char byte : text) {
        AppendUtf8(&converted, static_cast<unsigned char>(byte));
    }
    return converted;
}

// Removes and returns the text before the next zero byte.
std::string_view TakeWord(std::string_view *text) {
    const std::string_view word = text->substr(0, text->find('\0'));
    text->remove_prefix(std::min(text->size(), word.size() + 1));
    return word;
}

std::string LastPart(const std::string &path) {
    return path.substr(path.rfind('/') + 1);
}

std::uint32_t FirstOf(const std::vector<std::uint32_t> &numbers) {
    return numbers.empty() ? 0 : numbers.front();
}

} // namespace

// A window, and the window that it is a dialog of.
struct X11Front::Step {
    FrontWindow window;
    xcb_window_t owner = XCB_NONE;
};

X11Front::X11Front(X11Link *link) : fLink(link) {
    Watch(link->Root(), XCB_EVENT_MASK_PROPERTY_CHANGE);
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(link->Get(), &xcb_res_id);
    if (extension != nullptr && extension->present != 0) {
        const auto version = link->Await<xcb_res_query_version_reply_t>(
            xcb_res_query_version(link->Get(), XCB_RES_MAJOR_VERSION, XCB_RES_MINOR_VERSION));
        fHasProcesses = version != nullptr && std::pair(version->server_major, version->server_minor) >=
                                                  std::pair<std::uint16_t, std::uint16_t>(1, 2);
    }
}

void X11Front::Watch(xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(fLink->Get(), window, XCB_CW_EVENT_MASK, &events);
}

void X11Front::Notice(const xcb_generic_event_t &event) {
    constexpr unsigned kSentByProgram = 0x80;
    if ((event.response_type & ~kSentByProgram) != XCB_PROPERTY_NOTIFY) {
        return;
    }
    const auto &change = reinterpret_cast<const xcb_property_notify_event_t &>(event);
    const std::array telling{fLink->Atom(X11Name::GtkApplicationId), fLink->Atom(X11Name::KdeDesktopFile),
                             fLink->Atom(X11Name::ProcessId), xcb_atom_t{XCB_ATOM_WM_CLASS},
                             xcb_atom_t{XCB_ATOM_WM_TRANSIENT_FOR}};
    fIsOld = fIsOld || (change.window == fLink->Root() ? change.atom == fLink->Atom(X11Name::ActiveWindow)
                                                       : std::ranges::count(telling, change.atom) > 0);
}

// Only the server knows the process of every window. What the window itself says is wrong in a sandbox, where
// process ids are different, and on another machine.
std::uint32_t X11Front::ProcessOf(xcb_window_t window) {
    if (fHasProcesses) {
        const xcb_res_client_id_spec_t wanted = {.client = window,
                                                 .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        const auto answer = fLink->Await<xcb_res_query_client_ids_reply_t>(
            xcb_res_query_client_ids(fLink->Get(), 1, &wanted));
        if (answer != nullptr && answer->num_ids > 0) {
            const xcb_res_client_id_value_iterator_t id = xcb_res_query_client_ids_ids_iterator(answer.get());
            return xcb_res_client_id_value_value_length(id.data) > 0 ? *xcb_res_client_id_value_value(id.data)
                                                                     : 0;
        }
    }
    const auto machine = fLink->AskFor(window, XCB_ATOM_WM_CLIENT_MACHINE);
    const auto process = fLink->AskFor(window, fLink->Atom(X11Name::ProcessId));
    utsname here{};
    const bool isHere = uname(&here) == 0 && fLink->AwaitText(machine) == here.nodename;
    const std::uint32_t told = FirstOf(fLink->AwaitNumbers(process));
    return isHere ? told : 0;
}

X11Front::Step X11Front::Look(xcb_window_t window) {
    // Subscribes to changes first, so that none is missed between the answers and the next event.
    Watch(window, XCB_EVENT_MASK_PROPERTY_CHANGE);
    const auto names = fLink->AskFor(window, XCB_ATOM_WM_CLASS);
    const auto gtkId = fLink->AskFor(window, fLink->Atom(X11Name::GtkApplicationId));
    const auto kdeFile = fLink->AskFor(window, fLink->Atom(X11Name::KdeDesktopFile));
    const auto owner = fLink->AskFor(window, XCB_ATOM_WM_TRANSIENT_FOR);
    Step step;
    const std::string both = fLink->AwaitText(names);
    std::string_view left = both;
    step.window.windowName = AsUtf8(TakeWord(&left));
    step.window.windowClass = AsUtf8(TakeWord(&left));
    step.window.entryId = AsUtf8(fLink->AwaitText(gtkId));
    const std::string file = LastPart(AsUtf8(fLink->AwaitText(kdeFile)));
    if (step.window.entryId.empty()) {
        step.window.entryId = file;
    }
    step.owner = FirstOf(fLink->AwaitNumbers(owner));
    step.window.process = ProcessOf(window);
    step.window.program = ProgramOfProcess(step.window.process);
    return step;
}

bool X11Front::Update() {
    if (!fIsOld) {
        return false;
    }
    fIsOld = false;
    fLink->GiveTime(kTimeToTell);
    const xcb_window_t front =
        FirstOf(fLink->AwaitNumbers(fLink->AskFor(fLink->Root(), fLink->Atom(X11Name::ActiveWindow))));
    std::vector<xcb_window_t> chain;
    FrontWindow description;
    for (xcb_window_t window = front; window != XCB_NONE && window != fLink->Root() &&
                                      chain.size() < kLongestChain &&
                                      std::ranges::count(chain, window) == 0;) {
        Step step = Look(window);
        // Some toolkits put their windows below an invisible one without names.
        if (chain.empty() || !step.window.windowClass.empty()) {
            description = std::move(step.window);
        }
        chain.push_back(window);
        window = step.owner;
    }
    for (const xcb_window_t window : fWatched) {
        if (std::ranges::count(chain, window) == 0) {
            Watch(window, XCB_EVENT_MASK_NO_EVENT);
        }
    }
    fWatched = std::move(chain);
    fIsOld = fLink->IsLate();
    if (!fIsOld) {
        fWindow = front;
        fDescription = std::move(description);
    }
    return !fIsOld;
}

} // namespace drevix
