#include "device/held_keys.h"

#include <algorithm>

namespace drevix {
namespace {

constexpr std::uint16_t kAllModifiers = UINT16_MAX;

} // namespace

void HeldKeys::Press(const KeyChord &chord, std::vector<KeyStep> *steps) {
    if (chord.scanCode > kMostScanCode) {
        return;
    }
    PressModifiers(chord.modifiers, steps);
    if (fChords[chord.scanCode] > 0) {
        steps->push_back({chord.scanCode, false});
        steps->push_back({chord.scanCode, true});
    }
    Add(chord.scanCode, steps);
}

void HeldKeys::Release(const KeyChord &chord, std::vector<KeyStep> *steps) {
    if (chord.scanCode > kMostScanCode) {
        return;
    }
    Remove(chord.scanCode, steps);
    ReleaseModifiers(chord.modifiers, steps);
}

void HeldKeys::PressModifiers(std::uint16_t modifiers, std::vector<KeyStep> *steps) {
    for (const std::uint16_t scanCode : ModifierScanCodes(modifiers)) {
        Add(scanCode, steps);
    }
}

void HeldKeys::ReleaseModifiers(std::uint16_t modifiers, std::vector<KeyStep> *steps) {
    const std::vector<std::uint16_t> scanCodes = ModifierScanCodes(modifiers);
    std::for_each(scanCodes.rbegin(), scanCodes.rend(),
                  [&](std::uint16_t scanCode) { Remove(scanCode, steps); });
}

void HeldKeys::ReleaseAll(std::vector<KeyStep> *steps) {
    const std::vector<std::uint16_t> modifiers = ModifierScanCodes(kAllModifiers);
    for (const bool isModifier : {false, true}) {
        for (std::uint16_t scanCode = 0; scanCode <= kMostScanCode; ++scanCode) {
            if (fChords[scanCode] > 0 && (std::ranges::count(modifiers, scanCode) > 0) == isModifier) {
                fChords[scanCode] = 0;
                steps->push_back({scanCode, false});
            }
        }
    }
}

bool HeldKeys::IsNoneDown() const {
    return std::ranges::all_of(fChords, [](std::uint32_t chords) { return chords == 0; });
}

void HeldKeys::Add(std::uint16_t scanCode, std::vector<KeyStep> *steps) {
    if (++fChords[scanCode] == 1) {
        steps->push_back({scanCode, true});
    }
}

void HeldKeys::Remove(std::uint16_t scanCode, std::vector<KeyStep> *steps) {
    if (fChords[scanCode] > 0 && --fChords[scanCode] == 0) {
        steps->push_back({scanCode, false});
    }
}

} // namespace drevix
