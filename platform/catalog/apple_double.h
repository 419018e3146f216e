// AppleDouble files, version 2: the Finder information and the resource fork of a file, in the file "._NAME"
// beside it. The form is that of "AppleSingle/AppleDouble Formats" (RFC 1740); docs/items-folder.md has it.
#pragma once

#include "platform/catalog/catalog.h"

#include <array>
#include <span>
#include <string>

namespace drevix {

// What an AppleDouble file holds. Entries of other kinds are not kept.
struct AppleDouble {
    std::array<std::byte, 32> finderInfo{}; // FInfo, big endian, and what the Finder keeps behind it
    std::string resourceFork;
};

// The largest file that is taken for one: a resource fork's offsets reach 16 MB.
inline constexpr std::size_t kAppleDoubleMaxBytes = (std::size_t{1} << 24) + (std::size_t{1} << 17);

[[nodiscard]] FInfo GetFInfo(const AppleDouble &file);
void SetFInfo(AppleDouble &file, const FInfo &info);

// Takes the bytes of an AppleDouble file apart. noErr, or mapReadErr with *file unchanged for what is none:
// another magic number or version, entries beyond the end, or two of one kind.
[[nodiscard]] OSErr ParseAppleDouble(std::span<const std::byte> bytes, AppleDouble *file);
[[nodiscard]] std::string AppleDoubleBytes(const AppleDouble &file);

// The path of the AppleDouble file of the file at a path.
[[nodiscard]] std::string AppleDoublePath(const std::string &path);

// Reads the AppleDouble file of the file at `path`. noErr; fnfErr when there is none; mapReadErr for a file
// of that name that is none: damaged, too large, a link, a pipe or a folder; permErr, ioErr, ...
[[nodiscard]] OSErr ReadAppleDouble(const std::string &path, AppleDouble *file);
// Writes it whole, flushed to the disk. A failure leaves the old one.
[[nodiscard]] OSErr WriteAppleDouble(const std::string &path, const AppleDouble &file);
// Removes it if it is an AppleDouble file, sound or not: one whose magic number is right. noErr also when
// there is none and when another file with that name was left.
[[nodiscard]] OSErr RemoveAppleDouble(const std::string &path);

} // namespace drevix
