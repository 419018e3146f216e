// A connection to an X server, and its answers. Internal to this folder.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace drevix {

struct X11Freer {
    void operator()(void *memory) const { std::free(memory); }
};
// Owns memory that the library allocated.
template <class Object>
using X11Owner = std::unique_ptr<Object, X11Freer>;

// The atoms that we use; X11Link knows their texts.
enum class X11Name : std::uint8_t {
    Supported,
    ActiveWindow,
    ShowingDesktop,
    CloseWindow,
    WindowState,
    FullScreen,
    ChangeState,
    GtkApplicationId,
    KdeDesktopFile,
    ProcessId,
    Count, // not a name
};

class X11Link {
  public:
    // Connects to a display, $DISPLAY if null, and looks up the atoms. Null if there is no such server or it
    // refuses us.
    [[nodiscard]] static std::unique_ptr<X11Link> Open(const char *display);

    [[nodiscard]] xcb_connection_t *Get() const { return fConnection.get(); }
    [[nodiscard]] xcb_window_t Root() const { return fRoot; }
    [[nodiscard]] xcb_atom_t Atom(X11Name name) const { return fAtoms.at(static_cast<std::size_t>(name)); }
    [[nodiscard]] bool IsLost() const { return xcb_connection_has_error(fConnection.get()) != 0; }

    // Limits the time for all answers from now on together: a server that hangs, or that another program has
    // grabbed, must not block us for ever.
    void GiveTime(std::chrono::milliseconds limit) {
        fEnd = std::chrono::steady_clock::now() + limit;
        fIsLate = false;
    }
    // Whether an answer has not come in that time.
    [[nodiscard]] bool IsLate() const { return fIsLate; }

    // The answer to a request; null if it is an error, as for a window that is gone, or does not come in
    // time.
    template <class Answer, class Cookie>
    [[nodiscard]] X11Owner<Answer> Await(Cookie question) {
        return X11Owner<Answer>(static_cast<Answer *>(AwaitAnswer(question.sequence)));
    }

    // Requests a property of a window; many can be requested before waiting for the first answer.
    [[nodiscard]] xcb_get_property_cookie_t AskFor(xcb_window_t window, xcb_atom_t property) const;
    // Empty, or no numbers, for a property that the window lacks or that has another format.
    [[nodiscard]] std::string AwaitText(xcb_get_property_cookie_t question);
    [[nodiscard]] std::vector<std::uint32_t> AwaitNumbers(xcb_get_property_cookie_t question);

  private:
    struct Disconnector {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    X11Link(xcb_connection_t *connection, int screen);
    [[nodiscard]] void *AwaitAnswer(unsigned sequence);
    [[nodiscard]] std::string AwaitBytes(xcb_get_property_cookie_t question, unsigned format);

    std::unique_ptr<xcb_connection_t, Disconnector> fConnection;
    xcb_window_t fRoot = XCB_NONE;
    std::array<xcb_atom_t, static_cast<std::size_t>(X11Name::Count)> fAtoms{};
    std::chrono::steady_clock::time_point fEnd;
    bool fIsLate = false;
};

} // namespace drevix
