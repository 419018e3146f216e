#include "platform/desktop/keyboard_layout.h"

#include "platform/base/mac_roman.h"
#include "platform/base/status.h"
#include "platform/files/file_update.h"
#include "platform/windows/wayland_keyboard.h"

#include <algorithm>
#include <bitset>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>
#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace drevix {
namespace {

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T *object) const {
        release(object);
    }
};
using Context = std::unique_ptr<xkb_context, Releaser<xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Releaser<xkb_keymap_unref>>;
using KeyState = std::unique_ptr<xkb_state, Releaser<xkb_state_unref>>;
using Connection = std::unique_ptr<xcb_connection_t, Releaser<xcb_disconnect>>;

constexpr const char *kKeyboardFile = "/etc/default/keyboard";
constexpr xkb_keycode_t kKeycodeOffset = 8; // X11 reserves key codes 0 to 7
constexpr xkb_keycode_t kEscapeKey = kKeycodeOffset + 1;
constexpr std::chrono::milliseconds kLongestWait{200}; // for a compositor, at program start
constexpr std::size_t kKeys = std::tuple_size_v<KeyboardCharacters>;

// A keymap, or null, and its current group.
struct Layout {
    Keymap keymap;
    xkb_layout_index_t group = 0;
};

// The unmodified symbol of each key in one group, by scan code.
struct Symbols {
    std::array<xkb_keysym_t, kKeys> ofKey{};
    std::bitset<kKeys> isOnKeypad;
};

struct DeadKey {
    xkb_keysym_t symbol;
    xkb_keysym_t accent;
};
// clang-format off
// The dead keys whose accents Mac OS Roman has.
constexpr auto kDeadKeys = std::to_array<DeadKey>({
    {XKB_KEY_dead_grave, XKB_KEY_grave},
    {XKB_KEY_dead_acute, XKB_KEY_acute},
    {XKB_KEY_dead_circumflex, XKB_KEY_asciicircum},
    {XKB_KEY_dead_tilde, XKB_KEY_asciitilde},
    {XKB_KEY_dead_macron, XKB_KEY_macron},
    {XKB_KEY_dead_breve, XKB_KEY_breve},
    {XKB_KEY_dead_abovedot, XKB_KEY_abovedot},
    {XKB_KEY_dead_diaeresis, XKB_KEY_diaeresis},
    {XKB_KEY_dead_abovering, 0x010002DA}, // the keysym for U+02DA, which has no name
    {XKB_KEY_dead_doubleacute, XKB_KEY_doubleacute},
    {XKB_KEY_dead_caron, XKB_KEY_caron},
    {XKB_KEY_dead_cedilla, XKB_KEY_cedilla},
    {XKB_KEY_dead_ogonek, XKB_KEY_ogonek},
});
// clang-format on

bool Prints(xkb_keysym_t symbol) {
    const std::uint32_t character = xkb_keysym_to_utf32(symbol);
    return character >= ' ' && character != 0x7F;
}

xkb_keysym_t SymbolAt(xkb_keymap *keymap, xkb_keycode_t key, xkb_layout_index_t group,
                      xkb_level_index_t level) {
    const xkb_keysym_t *symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, key, group, level, &symbols);
    return count == 1 ? *symbols : xkb_keysym_t{XKB_KEY_NoSymbol};
}

bool IsOfKeypad(xkb_keysym_t symbol) {
    return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal;
}

// `symbol` is that of the first level (no modifiers). Keypad keys print on the second, with Num Lock.
xkb_keysym_t PrintedSymbol(xkb_keymap *keymap, xkb_keycode_t key, xkb_layout_index_t group,
                           xkb_keysym_t symbol) {
    const auto *dead = std::ranges::find(kDeadKeys, symbol, &DeadKey::symbol);
    if (dead != kDeadKeys.end()) {
        return dead->accent;
    }
    return IsOfKeypad(symbol) && !Prints(symbol) ? SymbolAt(keymap, key, group, 1) : symbol;
}

Symbols SymbolsOf(xkb_keymap *keymap, xkb_layout_index_t group) {
    Symbols symbols;
    const xkb_keycode_t first = std::max(xkb_keymap_min_keycode(keymap), kKeycodeOffset);
    const xkb_keycode_t end =
        std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap) + 1, kKeys + kKeycodeOffset);
    for (xkb_keycode_t key = first; key < end; ++key) {
        const xkb_keysym_t symbol = SymbolAt(keymap, key, group, 0);
        symbols.ofKey[key - kKeycodeOffset] = PrintedSymbol(keymap, key, group, symbol);
        symbols.isOnKeypad.set(key - kKeycodeOffset, IsOfKeypad(symbol));
    }
    return symbols;
}

// Latin layouts place letters differently, and some lack a few; all others have none.
bool IsLatin(const Symbols &symbols) {
    std::bitset<XKB_KEY_z - XKB_KEY_a + 1> letters;
    for (const xkb_keysym_t symbol : symbols.ofKey) {
        if (symbol >= XKB_KEY_a && symbol <= XKB_KEY_z) {
            letters.set(symbol - XKB_KEY_a);
        }
    }
    return letters.count() >= letters.size() / 2;
}

std::string Utf8Of(xkb_keysym_t symbol) {
    std::array<char, 8> text{};
    xkb_keysym_to_utf8(symbol, text.data(), text.size());
    return text.data();
}

// 0 if Mac OS Roman lacks the character.
std::uint8_t MacRomanOf(xkb_keysym_t symbol) {
    const std::string text = Utf8Of(symbol);
    return FitsMacRoman(text) ? static_cast<std::uint8_t>(MacRomanFromUtf8(text)[0]) : 0;
}

// Collects characters layer by layer; the first layer that defines a key decides it. A later layer never
// assigns a character that a key already has, which would lead to the wrong key.
struct Gathering {
    KeyboardCharacters characters{};
    std::bitset<kKeys> decided;
    std::bitset<256> taken; // characters already on a key outside the keypad

    void TakeUp(const Symbols &symbols) {
        const std::bitset<256> takenBefore = taken;
        for (std::size_t key = 0; key < kKeys; ++key) {
            if (decided.test(key)) {
                continue;
            }
            const bool prints = Prints(symbols.ofKey[key]);
            const std::uint8_t character = prints ? MacRomanOf(symbols.ofKey[key]) : std::uint8_t{0};
            const bool isOnKeypad = symbols.isOnKeypad.test(key);
            if (character != 0 && (isOnKeypad || !takenBefore.test(character))) {
                characters[key] = character;
                taken.set(character, taken.test(character) || !isOnKeypad);
            }
            decided.set(key, !prints || characters[key] != 0);
        }
    }
};

// The keys that print something without a character here.
std::vector<UnnamedKey> UnnamedKeysOf(const Symbols &symbols, const KeyboardCharacters &characters) {
    std::vector<UnnamedKey> keys;
    for (std::size_t key = 0; key < kKeys; ++key) {
        if (characters[key] == 0 && Prints(symbols.ofKey[key])) {
            keys.push_back({static_cast<std::uint16_t>(key), Utf8Of(symbols.ofKey[key])});
        }
    }
    return keys;
}

Keymap KeymapOfNames(xkb_context *context, const KeyboardLayoutNames &names) {
    const xkb_rule_names wanted = {names.rules.c_str(), names.model.c_str(), names.layout.c_str(),
                                   names.variant.c_str(), names.options.c_str()};
    return Keymap(xkb_keymap_new_from_names(context, &wanted, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

const KeyboardLayoutNames &UsLayout() {
    static const KeyboardLayoutNames names = {"", "", "us", "", ""};
    return names;
}

// The Latin groups, the current one first.
std::vector<Symbols> LatinGroups(const Layout &layout) {
    std::vector<Symbols> latin;
    const xkb_layout_index_t groups = xkb_keymap_num_layouts(layout.keymap.get());
    for (xkb_layout_index_t i = 0; i < groups; ++i) {
        const Symbols symbols = SymbolsOf(layout.keymap.get(), (layout.group + i) % groups);
        if (IsLatin(symbols)) {
            latin.push_back(symbols);
        }
    }
    return latin;
}

bool GatherCharacters(xkb_context *context, const Layout &layout, KeyboardCharacters *characters,
                      std::vector<UnnamedKey> *unnamed) {
    if (layout.keymap == nullptr) {
        return false;
    }
    const std::vector<Symbols> latin = LatinGroups(layout);
    Gathering gathering;
    for (const Symbols &symbols : latin) {
        gathering.TakeUp(symbols);
    }
    if (!gathering.decided.all()) { // rare, and building a keymap takes milliseconds
        const Keymap us = KeymapOfNames(context, UsLayout());
        if (us == nullptr && latin.empty()) {
            return false;
        }
        if (us != nullptr) {
            gathering.TakeUp(SymbolsOf(us.get(), 0));
        }
    }
    if (unnamed != nullptr) {
        *unnamed =
            latin.empty() ? std::vector<UnnamedKey>() : UnnamedKeysOf(latin.front(), gathering.characters);
    }
    *characters = gathering.characters;
    return true;
}

// Empty if the compositor sends no keymap, or one from an on-screen keyboard, which numbers its keys freely:
// no real layout has a character on Escape.
Layout LayoutOf(xkb_context *context, const WaylandKeymap &read) {
    Keymap keymap(xkb_keymap_new_from_buffer(context, read.text.data(), read.text.size(),
                                             XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (keymap == nullptr || Prints(SymbolAt(keymap.get(), kEscapeKey, 0, 0))) {
        return {};
    }
    return {std::move(keymap), read.group.value_or(0)};
}

Layout LayoutOfCompositor(xkb_context *context) {
    WaylandKeymap read;
    return ReadWaylandKeymap(kLongestWait, &read) ? LayoutOf(context, read) : Layout();
}

Layout LayoutOfXServer(xkb_context *context) {
    if (const char *display = std::getenv("DISPLAY"); display == nullptr || *display == '\0') {
        return {};
    }
    const Connection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0 ||
        xkb_x11_setup_xkb_extension(connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION,
                                    XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS,
                                    nullptr, nullptr, nullptr, nullptr) == 0) {
        return {};
    }
    const std::int32_t keyboard = xkb_x11_get_core_keyboard_device_id(connection.get());
    if (keyboard < 0) {
        return {};
    }
    Keymap keymap(
        xkb_x11_keymap_new_from_device(context, connection.get(), keyboard, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (keymap == nullptr) {
        return {};
    }
    const KeyState state(xkb_x11_state_new_from_device(keymap.get(), connection.get(), keyboard));
    const xkb_layout_index_t group =
        state != nullptr ? xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE) : 0;
    return {std::move(keymap), group};
}

// Keeps the library from printing warnings about layouts, which users cannot fix.
Context MakeContext() {
    Context context(xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES));
    if (context != nullptr) {
        xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    }
    return context;
}

std::string Environment(const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

constexpr std::string_view kBlanks = " \t\r";

std::string_view WithoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// The value of a shell line NAME=VALUE, as far as such files need: quoted, or up to a blank.
std::string ShellValue(std::string_view text) {
    const bool isQuoted = !text.empty() && (text.front() == '"' || text.front() == '\'');
    const std::size_t start = isQuoted ? 1 : 0;
    const std::size_t end = isQuoted ? text.find(text.front(), 1) : text.find_first_of(" \t\r#;");
    return std::string(text.substr(start, end == std::string_view::npos ? end : end - start));
}

struct KeyboardFileEntry {
    std::string_view name;
    std::string KeyboardLayoutNames::*value;
};
constexpr auto kKeyboardFileEntries = std::to_array<KeyboardFileEntry>({
    {"XKBRULES=", &KeyboardLayoutNames::rules},
    {"XKBMODEL=", &KeyboardLayoutNames::model},
    {"XKBLAYOUT=", &KeyboardLayoutNames::layout},
    {"XKBVARIANT=", &KeyboardLayoutNames::variant},
    {"XKBOPTIONS=", &KeyboardLayoutNames::options},
});

} // namespace

KeyboardLayoutNames ParseKeyboardFile(std::string_view text) {
    KeyboardLayoutNames names;
    while (!text.empty()) {
        const std::string_view line = WithoutLeadingBlanks(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
        for (const KeyboardFileEntry &entry : kKeyboardFileEntries) {
            if (line.starts_with(entry.name)) {
                names.*entry.value = ShellValue(line.substr(entry.name.size()));
            }
        }
    }
    return names;
}

KeyboardLayoutNames ConfiguredKeyboardLayout() {
    if (std::string layout = Environment("XKB_DEFAULT_LAYOUT"); !layout.empty()) {
        return {Environment("XKB_DEFAULT_RULES"), Environment("XKB_DEFAULT_MODEL"), std::move(layout),
                Environment("XKB_DEFAULT_VARIANT"), Environment("XKB_DEFAULT_OPTIONS")};
    }
    std::string text;
    if (ReadWholeFile(kKeyboardFile, &text) != noErr) {
        return UsLayout(); // many systems have no such file
    }
    KeyboardLayoutNames names = ParseKeyboardFile(text);
    return names.layout.empty() ? UsLayout() : names;
}

bool KeyboardCharactersOfLayout(const KeyboardLayoutNames &names, KeyboardCharacters *characters,
                                std::vector<UnnamedKey> *unnamed) try {
    const Context context = MakeContext();
    return context != nullptr &&
           GatherCharacters(context.get(), {KeymapOfNames(context.get(), names), 0}, characters, unnamed);
} catch (const std::bad_alloc &) {
    return false;
}

bool CurrentKeyboardCharacters(KeyboardCharacters *characters, std::vector<UnnamedKey> *unnamed,
                               WindowSystem first) try {
    const Context context = MakeContext();
    if (context == nullptr) {
        return false;
    }
    std::array systems = {LayoutOfCompositor, LayoutOfXServer};
    std::rotate(systems.begin(), systems.begin() + (first == WindowSystem::X11 ? 1 : 0), systems.end());
    for (const auto &layoutOf : systems) {
        if (GatherCharacters(context.get(), layoutOf(context.get()), characters, unnamed)) {
            return true;
        }
    }
    return KeyboardCharactersOfLayout(ConfiguredKeyboardLayout(), characters, unnamed) ||
           KeyboardCharactersOfLayout(UsLayout(), characters, unnamed);
} catch (const std::bad_alloc &) {
    return false;
}

bool KeyboardCharactersOfCompositor(void *connection, KeyboardCharacters *characters,
                                    std::vector<UnnamedKey> *unnamed) try {
    WaylandKeymap read;
    const Context context = MakeContext();
    return context != nullptr && ReadWaylandKeymapOver(connection, kLongestWait, &read) &&
           GatherCharacters(context.get(), LayoutOf(context.get(), read), characters, unnamed);
} catch (const std::bad_alloc &) {
    return false;
}

} // namespace drevix
