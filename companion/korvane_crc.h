// How a companion menu entry is identified in a settings record.
#pragma once

#include <cstdint>
#include <string_view>

namespace drevix {

// The CRC-32 of the title's UTF-8 bytes, as the `crc` field of an action slot holds it.
[[nodiscard]] std::uint32_t KorvaneStringCRC(std::string_view title);

} // namespace drevix
