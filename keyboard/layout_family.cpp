#include "keyboard/layout_family.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <string>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

// clang-format off
constexpr auto kFamilies = std::to_array<LayoutFamily>({
    {"",        {"qwertyuiop  ", "asdfghjkl  ", "zxcvbnm   "}},
    {"qwertz",  {"qwertzuiop  ", "asdfghjkl  ", "yxcvbnm   "}},
    {"azerty",  {"azertyuiop  ", "qsdfghjklm ", "wxcvbn    "}},
    {"dvorak",  {"   pyfgcrl  ", "aoeuidhtns ", " qjkxbmwvz"}},
    {"colemak", {"qwfpgjluy   ", "arstdhneio ", "zxcvbkm   "}},
});
// clang-format on
constexpr std::array<std::uint16_t, 3> kFirstScanCodes = {16, 30, 44}; // of Q, A and Z

int CountMatches(const LayoutFamily &family, std::span<const std::uint8_t, 128> characters) {
    int matches = 0;
    for (std::size_t row = 0; row < family.letters.size(); ++row) {
        std::uint16_t scanCode = kFirstScanCodes.at(row);
        for (const char letter : family.letters.at(row)) {
            const std::uint8_t keyCode = KeyCodeFromScanCode(scanCode++);
            matches += letter != ' ' && characters[keyCode] == static_cast<std::uint8_t>(letter) ? 1 : 0;
        }
    }
    return matches;
}

} // namespace

std::span<const LayoutFamily> LayoutFamilies() {
    return kFamilies;
}

const LayoutFamily &FamilyOfLayout(std::span<const std::uint8_t, 128> characters) {
    const LayoutFamily *best = kFamilies.data();
    for (const LayoutFamily &family : kFamilies) {
        if (CountMatches(family, characters) > CountMatches(*best, characters)) {
            best = &family;
        }
    }
    return *best;
}

FSRef FactoryFolder(const FSRef &resources, const LayoutFamily &family) {
    FSRef folder = resources;
    if (!family.folder.empty()) {
        folder.path.append("/").append(family.folder);
    }
    const std::string file = folder.path + "/" + kDefaultsFileName;
    return ::access(file.c_str(), R_OK) == 0 ? folder : resources;
}

FSRef FactoryFolder(const FSRef &resources) {
    return FactoryFolder(resources, FamilyOfLayout(gAsciiTable));
}

OtherFamilies::OtherFamilies(FSRef resources, const AppPrefs &prefs)
    : fResources(std::move(resources)), fPrefs(prefs) {}

bool OtherFamilies::Do(const ActionSlot &action, SlotIndex slot) const {
    if (action.command != kActionKeystroke) {
        return false; // the families have no other difference
    }
    if (!fDefaults) {
        fDefaults.emplace();
        for (const LayoutFamily &family : kFamilies) {
            AppPrefs defaults{};
            if (LoadDefaultPrefs(FactoryFolder(fResources, family), fPrefs, &defaults)) {
                fDefaults->push_back(defaults);
            }
        }
    }
    return std::ranges::any_of(*fDefaults, [&](const AppPrefs &defaults) {
        const ActionSlot &other = defaults.device[0].action[slot];
        return other.command == action.command && other.keyCode == action.keyCode &&
               other.modifiers == action.modifiers && other.delay == action.delay;
    });
}

} // namespace drevix
