// Property lists: the value type, reading XML and binary lists, writing XML lists.
// The XML form is Apple's document type "PropertyList-1.0.dtd"; the binary form is "bplist00".
#pragma once

#include "platform/base/types.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace drevix {

class PropertyList;

// The elements of an array, in order.
using PropertyListArray = std::vector<PropertyList>;

// The entries of a dictionary, in file order. A duplicate key has its last value.
class PropertyListDictionary {
  public:
    using Entry = std::pair<std::string, PropertyList>;

    // The value of a key, or null. Linear in the number of entries.
    [[nodiscard]] const PropertyList *Find(std::string_view key) const;
    [[nodiscard]] PropertyList *Find(std::string_view key);
    // Appends an entry; the value is anything that converts to PropertyList. May throw std::bad_alloc, as the
    // standard containers do.
    template <typename Value>
    void Add(std::string key, Value &&value);
    // Appends an entry with an empty key and the value `false`, for the caller to fill in. Valid until the
    // next one is added.
    Entry &AddBlank();
    [[nodiscard]] const std::vector<Entry> &Entries() const { return fEntries; }

  private:
    void MakeRoom();

    std::vector<Entry> fEntries;
};

// Binary data; its own type, to distinguish it from text.
struct PropertyListData {
    std::string bytes;
};

// A point in time, in seconds since 2001-01-01 00:00:00 UTC.
struct PropertyListDate {
    double seconds;
};

// One value. Text is UTF-8. An integer is an std::uint64_t only from 2^63 up, which occurs only in foreign
// lists.
class PropertyList {
  public:
    using Value = std::variant<bool, std::int64_t, std::uint64_t, double, std::string, PropertyListData,
                               PropertyListDate, PropertyListArray, PropertyListDictionary>;

    PropertyList(bool value) : fValue(value) {}
    PropertyList(std::int64_t value) : fValue(value) {}
    PropertyList(double value) : fValue(value) {}
    PropertyList(std::string value) : fValue(std::move(value)) {}
    PropertyList(PropertyListData value) : fValue(std::move(value)) {}
    PropertyList(PropertyListDate value) : fValue(value) {}
    PropertyList(PropertyListArray value) : fValue(std::move(value)) {}
    PropertyList(PropertyListDictionary value) : fValue(std::move(value)) {}
    PropertyList(const char *) = delete; // would become a bool

    // The value as one of the alternatives of Value, or null if it is another.
    template <typename T>
    [[nodiscard]] const T *As() const {
        return std::get_if<T>(&fValue);
    }
    template <typename T>
    [[nodiscard]] T *As() {
        return std::get_if<T>(&fValue);
    }
    [[nodiscard]] const Value &Get() const { return fValue; }
    [[nodiscard]] Value &Get() { return fValue; }

  private:
    Value fValue;
};

inline PropertyList PropertyListUnsigned(std::uint64_t number) {
    PropertyList list(static_cast<std::int64_t>(number));
    if (number > INT64_MAX) {
        list.Get().emplace<std::uint64_t>(number);
    }
    return list;
}

inline void PropertyListDictionary::MakeRoom() {
    constexpr std::size_t kFewEntries = 8; // one allocation for most dictionaries
    if (fEntries.capacity() == 0) {
        fEntries.reserve(kFewEntries);
    }
}

template <typename Value>
void PropertyListDictionary::Add(std::string key, Value &&value) {
    MakeRoom();
    fEntries.emplace_back(std::move(key), std::forward<Value>(value));
}

inline PropertyListDictionary::Entry &PropertyListDictionary::AddBlank() {
    MakeRoom();
    return fEntries.emplace_back(std::string_view(), false);
}

// Limits that keep a hostile list from exhausting time, memory or the stack; a list that exceeds them is
// refused as damaged. An element is what is passed on at a time: one element of the root array, or the whole
// of any other root. Shared objects of a binary list count each time they occur, and its values must not
// outnumber the file's bytes, which they cannot unless arrays or dictionaries are shared.
inline constexpr int kPropertyListMaxDepth = 64;
inline constexpr std::size_t kPropertyListMaxBytes = std::size_t{2} << 30;         // of an XML file
inline constexpr std::size_t kPropertyListMaxBinaryBytes = std::size_t{256} << 20; // in memory at once
inline constexpr std::size_t kPropertyListMaxValues = std::size_t{64} << 10;       // per element
inline constexpr std::size_t kPropertyListMaxText = std::size_t{16} << 20; // per element: texts and data

// Why reading failed, for a message.
struct PropertyListProblem {
    int line = 0;     // of an XML list, from 1; 0 if unknown
    std::string text; // the end of a sentence, never empty after a failure ("an entity is declared")
};

// Called with each element of the root array, in order; may move from it. Return false to stop reading.
using PropertyListElementHandler = std::function<bool(PropertyList &element)>;

// Reads a list whose root is an array; its first bytes tell XML from binary. Passes on elements while
// reading, so that a long list is never completely in memory. If the list turns out to be damaged, the
// handler has already been called for earlier elements, and the caller must discard the results. noErr; -1
// for a damaged list, a root that is not an array, or a list beyond the limits (*problem, if given, says
// why); userCanceledErr if the handler stopped it; memFullErr; or the file's error.
[[nodiscard]] OSErr ReadPropertyListArray(const std::string &path, const PropertyListElementHandler &handler,
                                          PropertyListProblem *problem = nullptr);

// The same from memory.
[[nodiscard]] OSErr ParsePropertyListArray(std::span<const std::byte> bytes,
                                           const PropertyListElementHandler &handler,
                                           PropertyListProblem *problem = nullptr);

// Reads a whole list with any root. As ReadPropertyListArray, but *root is set only on success. For small
// files: the root may not exceed the limits of an element.
[[nodiscard]] OSErr ReadPropertyList(const std::string &path, PropertyList *root,
                                     PropertyListProblem *problem = nullptr);
[[nodiscard]] OSErr ParsePropertyList(std::span<const std::byte> bytes, PropertyList *root,
                                      PropertyListProblem *problem = nullptr);

// Writes an XML list whose root is an array, element by element, to a file in place
// ("platform/files/file_update.h"): destroying the writer before Finish has returned noErr restores the old
// file.
class PropertyListArrayWriter {
  public:
    PropertyListArrayWriter();
    PropertyListArrayWriter(const PropertyListArrayWriter &) = delete;
    PropertyListArrayWriter &operator=(const PropertyListArrayWriter &) = delete;
    ~PropertyListArrayWriter();

    [[nodiscard]] OSErr Open(const std::string &path);
    // Appends an element. Characters that XML 1.0 forbids are written as U+FFFD, dates in whole seconds
    // within the years 1 to 9999. noErr; after memFullErr or the file's error nothing more can be added.
    [[nodiscard]] OSErr Add(const PropertyList &element);
    [[nodiscard]] OSErr Finish();

  private:
    struct State;
    std::unique_ptr<State> fState;
};

// The XML text of a list with the given array as root, as from the writer, or with any value as root. May
// throw std::bad_alloc.
[[nodiscard]] std::string PropertyListArrayText(const PropertyListArray &elements);
[[nodiscard]] std::string PropertyListText(const PropertyList &root);

} // namespace drevix
