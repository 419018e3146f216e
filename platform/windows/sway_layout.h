// Which of the session's keyboard layouts is in force, as the compositor sway tells over its own socket ($SWAYSOCK): by
// Wayland's protocols only the client with the keyboard focus is told.
#pragma once

#include "platform/files/owners.h"

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace drevix {

class SwayLayout {
  public:
    // Asks, and waits up to 200 ms for the answer. Null where there is no such compositor.
    [[nodiscard]] static std::unique_ptr<SwayLayout> Open();

    // Can be read when Take has something to take.
    [[nodiscard]] int Descriptor() const { return fSocket.Get(); }
    // Takes what was told, without waiting. False when the connection is lost or what came is not valid.
    [[nodiscard]] bool Take();
    // The group of the session's keymap, 0 for the first layout. Where keyboards differ, that of the one that was
    // switched last; in the beginning, of one that was switched at all.
    [[nodiscard]] std::uint32_t Group() const { return fGroup; }

  private:
    explicit SwayLayout(SystemDescriptor socket) : fSocket(std::move(socket)) {}
    [[nodiscard]] bool Ask();
    [[nodiscard]] bool TakeMessage(std::uint32_t kind, std::string_view text);
    void TakeChange(const nlohmann::json &change, const nlohmann::json &input);
    void TakeKeyboard(const nlohmann::json &input);

    SystemDescriptor fSocket;
    std::string fBytes; // not yet a whole message
    std::uint32_t fGroup = 0;
    bool fHasReal = false; // keyboards, not of programs
    bool fIsAnswered = false;
};

} // namespace drevix
