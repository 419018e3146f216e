#include "platform/windows/desktop_uinput.h"

#include "platform/base/translation.h"
#include "platform/windows/wayland_link.h"

#include <poll.h>
#include <utility>

namespace drevix {
namespace {

class UinputDesktop final : public Desktop {
  public:
    UinputDesktop(std::unique_ptr<KernelKeyboard> keyboard, SystemDescriptor compositor)
        : fKeyboard(std::move(keyboard)), fCompositor(std::move(compositor)) {}

    [[nodiscard]] int Descriptor() const override { return fCompositor.Get(); }
    // Without the compositor our keys would go to the console.
    [[nodiscard]] bool Take() override {
        pollfd look = {.fd = fCompositor.Get(), .events = 0, .revents = 0};
        fIsLost = fIsLost || (poll(&look, 1, 0) > 0 && look.revents != 0);
        return !fIsLost;
    }
    [[nodiscard]] bool TellsFront() const override { return false; }
    [[nodiscard]] const FrontWindow &Front() const override { return fFront; }
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down) override {
        return fKeyboard->Key(scanCode, down);
    }
    [[nodiscard]] bool Scroll(ScrollDirection direction, int steps) override {
        fKeyboard->Scroll(direction, steps);
        return true;
    }
    [[nodiscard]] bool Ask(WindowRequest /*request*/) override { return false; }
    [[nodiscard]] bool Flush() override {
        fIsLost = !fKeyboard->Flush() || fIsLost;
        return !fIsLost;
    }

  private:
    std::unique_ptr<KernelKeyboard> fKeyboard;
    SystemDescriptor fCompositor;
    FrontWindow fFront; // never any
    bool fIsLost = false;
};

} // namespace

std::unique_ptr<Desktop> MakeUinputDesktop(std::unique_ptr<KernelKeyboard> keyboard,
                                           SystemDescriptor compositor) {
    return std::make_unique<UinputDesktop>(std::move(keyboard), std::move(compositor));
}

std::unique_ptr<Desktop> OpenUinputDesktop(std::string *problem) {
    SystemDescriptor compositor = ConnectedToWayland();
    if (!compositor) {
        *problem = Translated("the Wayland compositor cannot be reached");
        return nullptr;
    }
    std::unique_ptr<KernelKeyboard> keyboard = KernelKeyboard::Make(problem);
    if (keyboard == nullptr) {
        *problem = Translated("the Wayland compositor takes no keys from programs, and %1", *problem);
        return nullptr;
    }
    return MakeUinputDesktop(std::move(keyboard), std::move(compositor));
}

} // namespace drevix
