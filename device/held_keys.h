// Tracks the keys held down for controls, so that none stays down and none is released too early.
#pragma once

#include "device/action_plan.h"

#include <array>
#include <cstdint>
#include <vector>

namespace drevix {

struct KeyStep {
    std::uint16_t scanCode;
    bool isDown;
    friend bool operator==(const KeyStep &, const KeyStep &) = default;
};

// Turns chords into single key steps. Modifiers go down before the key and up after it, in reverse order. A
// modifier that two chords share stays down until both are released; a key pressed while down goes up first,
// so that each press is seen.
class HeldKeys {
  public:
    void Press(const KeyChord &chord, std::vector<KeyStep> *steps);
    // Ignores keys that are not down.
    void Release(const KeyChord &chord, std::vector<KeyStep> *steps);
    // The same for modifiers alone.
    void PressModifiers(std::uint16_t modifiers, std::vector<KeyStep> *steps);
    void ReleaseModifiers(std::uint16_t modifiers, std::vector<KeyStep> *steps);
    // Releases everything that is down, keys before modifiers.
    void ReleaseAll(std::vector<KeyStep> *steps);

    [[nodiscard]] bool IsNoneDown() const;

  private:
    void Add(std::uint16_t scanCode, std::vector<KeyStep> *steps);
    void Remove(std::uint16_t scanCode, std::vector<KeyStep> *steps);

    std::array<std::uint32_t, kMostScanCode + 1> fChords{}; // by scan code: number of chords that hold it
};

} // namespace drevix
