#include "platform/plist/property_list.h"
#include "platform/files/owners.h"

#include "platform/base/status.h"
#include "platform/plist/property_list_reading.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace drevix {
namespace {

constexpr std::size_t kPieceSize = std::size_t{64} << 10;
constexpr std::string_view kBinarySignature = "bplist";

bool IsBinary(std::span<const std::byte> start) {
    return start.size() >= kBinarySignature.size() &&
           std::memcmp(start.data(), kBinarySignature.data(), kBinarySignature.size()) == 0;
}

OSErr ReadList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
               PropertyListProblem *problem) {
    std::span<const std::byte> start;
    if (const OSErr status = bytes.Ahead(&start); status != noErr) {
        problem->text = status == kDamagedList ? kListTooLarge : "";
        return status;
    }
    return IsBinary(start) ? ReadBinaryList(bytes, what, handler, problem)
                           : ReadXmlList(bytes, what, handler, problem);
}

// Reports a failure to the caller as status and text.
OSErr Report(OSErr status, PropertyListProblem *found, PropertyListProblem *problem) {
    if (status != noErr && problem != nullptr) {
        if (found->text.empty()) {
            found->text = StatusText(status);
        }
        *problem = std::move(*found);
    }
    return status;
}

// Calls `read` and turns std::bad_alloc into memFullErr.
template <typename Read>
OSErr ReadAndReport(PropertyListProblem *problem, const Read &read) try {
    PropertyListProblem found;
    OSErr status = noErr;
    try {
        status = read(&found);
    } catch (const std::bad_alloc &) {
        status = memFullErr;
        found = {};
    }
    return Report(status, &found, problem);
} catch (const std::bad_alloc &) {
    return memFullErr; // no memory even for its text
}

OSErr ReadListFile(const std::string &path, HandOver what, const PropertyListElementHandler &handler,
                   PropertyListProblem *problem) {
    return ReadAndReport(problem, [&](PropertyListProblem *found) {
        OwnedFile file;
        if (const OSErr status = OpenFile(path, fsRdPerm, file.Out()); status != noErr) {
            return status;
        }
        ListBytes bytes(file.Get());
        return ReadList(bytes, what, handler, found);
    });
}

OSErr ParseList(std::span<const std::byte> bytes, HandOver what, const PropertyListElementHandler &handler,
                PropertyListProblem *problem) {
    return ReadAndReport(problem, [&](PropertyListProblem *found) {
        ListBytes list(bytes);
        return ReadList(list, what, handler, found);
    });
}

// Calls `read` with a handler that keeps the root; the list can still turn out to be damaged after it.
template <typename Read>
OSErr TakeRoot(PropertyList *root, const Read &read) {
    PropertyList taken(false);
    const OSErr status = read([&taken](PropertyList &whole) {
        taken = std::move(whole);
        return true;
    });
    if (status == noErr) {
        *root = std::move(taken);
    }
    return status;
}

} // namespace

const PropertyList *PropertyListDictionary::Find(std::string_view key) const {
    // Backwards, because the last duplicate counts.
    const auto found = std::find_if(fEntries.rbegin(), fEntries.rend(),
                                    [key](const Entry &entry) { return entry.first == key; });
    return found == fEntries.rend() ? nullptr : &found->second;
}

PropertyList *PropertyListDictionary::Find(std::string_view key) {
    return const_cast<PropertyList *>(std::as_const(*this).Find(key));
}

OSErr ListBytes::Ahead(std::span<const std::byte> *bytes) {
    if (fAhead.empty() && fFile != 0) {
        if (const OSErr status = ReadPiece(); status != noErr) {
            return status;
        }
    }
    *bytes = fAhead;
    return fTotal > kPropertyListMaxBytes ? kDamagedList : noErr;
}

OSErr ListBytes::ReadPiece() {
    fPiece.resize(kPieceSize);
    auto count = static_cast<std::int32_t>(fPiece.size());
    const OSErr status = FSRead(fFile, &count, fPiece.data());
    if (status != noErr && status != eofErr) {
        return status;
    }
    fAhead = std::as_bytes(std::span(fPiece).first(static_cast<std::size_t>(count)));
    fTotal += fAhead.size();
    return noErr;
}

OSErr ReadPropertyListArray(const std::string &path, const PropertyListElementHandler &handler,
                            PropertyListProblem *problem) {
    return ReadListFile(path, HandOver::Elements, handler, problem);
}

OSErr ParsePropertyListArray(std::span<const std::byte> bytes, const PropertyListElementHandler &handler,
                             PropertyListProblem *problem) {
    return ParseList(bytes, HandOver::Elements, handler, problem);
}

OSErr ReadPropertyList(const std::string &path, PropertyList *root, PropertyListProblem *problem) {
    return TakeRoot(root, [&](const PropertyListElementHandler &handler) {
        return ReadListFile(path, HandOver::Root, handler, problem);
    });
}

OSErr ParsePropertyList(std::span<const std::byte> bytes, PropertyList *root, PropertyListProblem *problem) {
    return TakeRoot(root, [&](const PropertyListElementHandler &handler) {
        return ParseList(bytes, HandOver::Root, handler, problem);
    });
}

} // namespace drevix
