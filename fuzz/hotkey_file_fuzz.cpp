// The companion's hotkey files: what is read of any bytes is read as the same after it has been written, and a
// file that is XML is read whole.
#include "companion/korvane_files.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace {

using namespace drevix;

void Check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool AreEqual(const KorvaneHotKey &a, const KorvaneHotKey &b) {
    return std::ranges::all_of(std::array{KorvaneKey::Menu, KorvaneKey::Key, KorvaneKey::Device,
                                          KorvaneKey::Modifier, KorvaneKey::VirtualKey},
                               [&](KorvaneKey key) { return a.Text(key) == b.Text(key); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    bool isWellFormed = false;
    const auto list = ParseKorvaneFile({reinterpret_cast<const char *>(data), size}, &isWellFormed);
    if (!list) {
        return 0;
    }
    Check(!isWellFormed || !list->isPartial);
    const std::string text = KorvaneFileText(*list);
    const auto again = ParseKorvaneFile(text, &isWellFormed);
    Check(isWellFormed && again && again->TargetApp == list->TargetApp);
    Check(std::ranges::equal(again->HotKeys, list->HotKeys, AreEqual));
    Check(KorvaneFileText(*again) == text);
    return 0;
}
