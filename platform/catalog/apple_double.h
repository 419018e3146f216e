// AppleDouble files, version 2: the Finder information and the resource fork of a file, in the file "._NAME"
// beside it. The format is "AppleSingle/AppleDouble Formats" (RFC 1740); see docs/items-folder.md.
#pragma once

#include "platform/catalog/catalog.h"

#include <array>
#include <span>
#include <string>

namespace drevix {

// The contents of an AppleDouble file. Other kinds of entries are dropped.
struct AppleDouble {
    std::array<std::byte, 32> finderInfo{}; // FInfo, big-endian, and the Finder's data after it
    std::string resourceFork;
};

// The largest file that is accepted: a resource fork's offsets reach 16 MB.
inline constexpr std::size_t kAppleDoubleMaxBytes = (std::size_t{1} << 24) + (std::size_t{1} << 17);

[[nodiscard]] FInfo GetFInfo(const AppleDouble &file);
void SetFInfo(AppleDouble &file, const FInfo &info);

// Parses an AppleDouble file. noErr, or mapReadErr with *file unchanged if it is invalid: wrong magic number
// or version, entries beyond the end, or two of one kind.
[[nodiscard]] OSErr ParseAppleDouble(std::span<const std::byte> bytes, AppleDouble *file);
[[nodiscard]] std::string AppleDoubleBytes(const AppleDouble &file);

// The path of the AppleDouble file of the file at a path.
[[nodiscard]] std::string AppleDoublePath(const std::string &path);

// Reads the AppleDouble file of the file at `path`. noErr; fnfErr if there is none; mapReadErr if a file of
// that name is not valid: damaged, too large, a link, a pipe or a folder; permErr, ioErr, ...
[[nodiscard]] OSErr ReadAppleDouble(const std::string &path, AppleDouble *file);
// Writes it and flushes it to the disk. A failure leaves the old one.
[[nodiscard]] OSErr WriteAppleDouble(const std::string &path, const AppleDouble &file);
// Removes it if it has the magic number of an AppleDouble file, even if damaged. noErr also if there is none,
// or if another file of that name was left alone.
[[nodiscard]] OSErr RemoveAppleDouble(const std::string &path);

} // namespace drevix
