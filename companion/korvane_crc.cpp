#include "companion/korvane_crc.h"

#include "util/crc32/crc32.h"

namespace drevix {

std::uint32_t KorvaneStringCRC(std::string_view title) {
    std::uint32_t crc = 0;
    StandardCRC32(title.data(), static_cast<std::uint32_t>(title.size()), &crc, nullptr);
    return crc;
}

} // namespace drevix
