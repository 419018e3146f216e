// XML property lists: whatever is read is read as the same after it has been written.
#include "platform/property_list.h"
#include "platform/status.h"

#include <cstdlib>
#include <span>

namespace {

using namespace drevix;

OSErr Read(std::span<const std::byte> bytes, PropertyListArray *elements) {
    PropertyListProblem problem;
    const OSErr status = ParsePropertyListArray(
        bytes,
        [elements](PropertyList &element) {
            elements->push_back(std::move(element));
            return true;
        },
        &problem);
    if ((status == noErr) != problem.text.empty()) {
        std::abort();
    }
    return status;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    PropertyListArray elements;
    if (Read(std::as_bytes(std::span(data, size)), &elements) != noErr) {
        return 0;
    }
    const std::string text = PropertyListArrayText(elements);
    PropertyListArray again;
    if (Read(std::as_bytes(std::span(text)), &again) != noErr || PropertyListArrayText(again) != text) {
        std::abort();
    }
    return 0;
}
