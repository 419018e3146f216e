#include "host/fonts_ahead.h"

#include <QFontDatabase>
#include <QStringList>

#include <system_error>
#include <tuple>

namespace drevix {

std::future<void> LookForFontsAhead() try {
    return std::async(std::launch::async, [] { std::ignore = QFontDatabase::families(); });
} catch (const std::system_error &) {
    return {}; // no thread is to be had, so the first text looks for them
}

} // namespace drevix
