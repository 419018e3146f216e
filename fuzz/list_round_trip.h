// Property lists that may be anything, for the fuzzers of their forms.
#pragma once

#include "fuzz/fuzzing.h"
#include "platform/base/status.h"
#include "platform/plist/property_list.h"

#include <span>
#include <string>

namespace drevix::fuzz {

// Reads a list; a failure must have its text. Of what shared objects multiply to, the start is enough.
[[nodiscard]] inline OSErr ReadList(std::span<const std::byte> bytes, PropertyListArray *elements) {
    constexpr std::size_t kMostElements = 1000;
    PropertyListProblem problem;
    const OSErr status = ParsePropertyListArray(
        bytes,
        [elements](PropertyList &element) {
            if (elements->size() < kMostElements) {
                elements->push_back(std::move(element));
            }
            return true;
        },
        &problem);
    Check((status == noErr) == problem.text.empty());
    return status;
}

// What can be read is read as the same after it has been written.
inline void CheckRoundTrip(std::span<const std::byte> bytes) {
    PropertyListArray elements;
    if (ReadList(bytes, &elements) != noErr) {
        return;
    }
    const std::string text = PropertyListArrayText(elements);
    PropertyListArray again;
    Check(ReadList(std::as_bytes(std::span(text)), &again) == noErr && PropertyListArrayText(again) == text);
}

} // namespace drevix::fuzz
