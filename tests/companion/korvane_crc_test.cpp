#include "companion/korvane_crc.h"

#include <gtest/gtest.h>

#include <string>

namespace drevix {
namespace {

// The CRC-32 as its polynomial defines it, one bit at a time.
std::uint32_t BitwiseCrc(std::string_view text) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char character : text) {
        crc ^= static_cast<std::uint8_t>(character);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320 : crc >> 1;
        }
    }
    return ~crc;
}

TEST(KorvaneStringCRC, Titles_HaveTheCrcOfTheirUtf8Bytes) {
    EXPECT_EQ(KorvaneStringCRC("123456789"), 0xCBF43926U);
    const std::string longTitle(1000, 'm');
    for (const std::string_view title :
         {std::string_view(), std::string_view("Brush Size"), std::string_view("\u00D6ffnen\u2026"),
          std::string_view("\u30D6\u30E9\u30B7\U0001F58C"), std::string_view("with\0zero", 9),
          std::string_view(longTitle)}) {
        EXPECT_EQ(KorvaneStringCRC(title), BitwiseCrc(title)) << title;
    }
    EXPECT_NE(KorvaneStringCRC("Brush"), KorvaneStringCRC("brush"));
}

} // namespace
} // namespace drevix
