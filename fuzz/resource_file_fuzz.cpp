// AppleDouble files and the resource forks in them: what is read is read as the same after it has been written.
#include "fuzz/fuzzing.h"
#include "platform/base/status.h"
#include "platform/catalog/resource_file.h"

#include <algorithm>
#include <random>

namespace drevix {
namespace {

using fuzz::Check;

std::span<const std::byte> Bytes(const std::string &text) {
    return std::as_bytes(std::span(text));
}

bool AreEqual(const Resource &a, const Resource &b) {
    return a.type == b.type && a.id == b.id && a.name == b.name && a.data == b.data;
}

void ReadFork(std::span<const std::byte> fork) {
    std::vector<Resource> resources;
    std::string written;
    if (ParseResourceFork(fork, &resources) != noErr || ResourceForkBytes(resources, &written) != noErr) {
        return;
    }
    std::vector<Resource> again;
    Check(ParseResourceFork(Bytes(written), &again) == noErr);
    // A damaged fork may have a type twice; writing brings its resources together.
    std::stable_sort(resources.begin(), resources.end(),
                     [](const Resource &a, const Resource &b) { return a.type < b.type; });
    std::stable_sort(again.begin(), again.end(),
                     [](const Resource &a, const Resource &b) { return a.type < b.type; });
    Check(std::ranges::equal(resources, again, AreEqual));
}

void ReadCompanionBytes(std::span<const std::byte> bytes) {
    AppleDouble file;
    if (ParseAppleDouble(bytes, &file) != noErr) {
        return;
    }
    AppleDouble again;
    Check(ParseAppleDouble(Bytes(AppleDoubleBytes(file)), &again) == noErr);
    Check(again.finderInfo == file.finderInfo && again.resourceFork == file.resourceFork);
    ReadFork(Bytes(file.resourceFork));
}

void Put(std::span<std::uint8_t> bytes, std::size_t offset, std::size_t number, std::size_t size) {
    for (std::size_t i = 0; i < size && offset + i < bytes.size(); ++i) {
        bytes[offset + i] = static_cast<std::uint8_t>(number >> (8 * (size - 1 - i)));
    }
}

// Makes the headers of any bytes agree with their length: the fork is the rest of the file, its map the last
// part of that, with types and names inside it.
void Mend(std::span<std::uint8_t> bytes, unsigned seed) {
    constexpr std::size_t kFork = 82;
    constexpr std::size_t kFirstData = 16;
    std::minstd_rand random(seed);
    if (bytes.size() < kFork + kFirstData + 30) {
        return;
    }
    Put(bytes, 0, 0x0005160700020000, 8);
    Put(bytes, 24, 2, 2);
    Put(bytes, 26, 0x0900000032, 8);
    Put(bytes, 34, 32, 4);
    Put(bytes, 38, 0x0200000052, 8);
    const std::size_t size = bytes.size() - kFork;
    Put(bytes, 46, size, 4);
    const std::size_t map = kFirstData + random() % (size - kFirstData - 29);
    Put(bytes, kFork, kFirstData, 4);
    Put(bytes, kFork + 4, map, 4);
    Put(bytes, kFork + 8, map - kFirstData, 4);
    Put(bytes, kFork + 12, size - map, 4);
    Put(bytes, kFork + map + 24, 28, 2);
    Put(bytes, kFork + map + 26, random() % (size - map), 2);
    Put(bytes, kFork + map + 28, random() % 3, 2);       // types, less one
    Put(bytes, kFork + map + 34, random() % 4, 2);       // resources of the first, less one
    Put(bytes, kFork + map + 36, 10 + random() % 20, 2); // where its references begin
    Put(bytes, kFork + kFirstData, random() % 16, 4);    // length of the first data
}

} // namespace
} // namespace drevix

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (seed % 4 == 0) {
        drevix::Mend({data, size}, seed);
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto bytes = std::as_bytes(std::span(data, size));
    drevix::ReadCompanionBytes(bytes);
    drevix::ReadFork(bytes); // a fork alone
    return 0;
}
