// The keys that are down on behalf of controls, so that none stays down and none goes up too early.
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

// Turns chords into single keys. Modifiers go down before the key and up after it, in reverse. A modifier that two
// chords need stays down until both are released; a key that is pressed while it is down goes up first, so that each
// press is seen.
class HeldKeys {
  public:
    void Press(const KeyChord &chord, std::vector<KeyStep> *steps);
    // Does nothing for keys that are not down.
    void Release(const KeyChord &chord, std::vector<KeyStep> *steps);
    // Releases whatever is down, the keys before the modifiers.
    void ReleaseAll(std::vector<KeyStep> *steps);

    [[nodiscard]] bool IsNoneDown() const;

  private:
    void Add(std::uint16_t scanCode, std::vector<KeyStep> *steps);
    void Remove(std::uint16_t scanCode, std::vector<KeyStep> *steps);

    std::array<std::uint32_t, kMostScanCode + 1> fChords{}; // by scan code, how many chords need it down
};

} // namespace drevix
