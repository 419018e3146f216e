// What the tests of property lists share: reading into memory, and a check against an independent program.
#pragma once

#include "platform/plist/property_list.h"
#include "tests/support/testing.h"

#include <cmath>

namespace drevix::test {

struct ReadOutcome {
    OSErr status;
    PropertyListArray elements;
    PropertyListProblem problem;

    // The elements that were read, as XML.
    [[nodiscard]] std::string Text() const { return PropertyListArrayText(elements); }
};

// What `read` gives, which takes a handler of elements and a place for the problem.
template <class Read>
ReadOutcome Outcome(const Read &read) {
    ReadOutcome outcome{};
    const auto take = [&](PropertyList &element) {
        outcome.elements.push_back(std::move(element));
        return true;
    };
    outcome.status = read(take, &outcome.problem);
    return outcome;
}

inline ReadOutcome ParseList(std::string_view bytes) {
    return Outcome([&](const auto &take, PropertyListProblem *problem) {
        return ParsePropertyListArray(std::as_bytes(std::span(bytes)), take, problem);
    });
}

// What reading a list of one element gave: this text of it, or with null a refusal.
inline void ExpectElement(const ReadOutcome &outcome, const char *written) {
    EXPECT_EQ(outcome.status, written == nullptr ? -1 : noErr) << outcome.problem.text;
    EXPECT_EQ(outcome.problem.text.empty(), written != nullptr);
    if (written != nullptr) {
        EXPECT_THAT(outcome.Text(), testing::HasSubstr("<array>\n\t" + std::string(written) + "\n</array>"));
    }
}

struct RootOutcome {
    OSErr status;
    PropertyList root;
    PropertyListProblem problem;
};

inline RootOutcome ParseRoot(std::string_view bytes) {
    RootOutcome outcome = {noErr, PropertyList(false), {}};
    outcome.status = ParsePropertyList(std::as_bytes(std::span(bytes)), &outcome.root, &outcome.problem);
    return outcome;
}

inline ReadOutcome ReadList(const std::string &path) {
    return Outcome([&](const auto &take, PropertyListProblem *problem) {
        return ReadPropertyListArray(path, take, problem);
    });
}

inline OSErr WriteList(const std::string &path, const PropertyListArray &elements) {
    PropertyListArrayWriter writer;
    OSErr status = writer.Open(path);
    for (auto element = elements.begin(); status == noErr && element != elements.end(); ++element) {
        status = writer.Add(*element);
    }
    return status == noErr ? writer.Finish() : status;
}

// An XML list around the given elements of its array.
inline std::string XmlList(std::string_view elements) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><array>" + std::string(elements) +
           "</array></plist>";
}

// Runs a Python program, with `argument` as sys.argv[1], and says whether it ended well.
inline bool RunsInPython(const ScratchFolder &scratch, std::string_view program,
                         const std::string &argument) {
    WriteWhole(scratch.Path("program.py"), program);
    return std::system(("python3 " + scratch.Path("program.py") + " " + argument).c_str()) == 0;
}

// Every kind of value, and how Python's plistlib has it.
inline PropertyListArray EveryValue() {
    PropertyListDictionary inner;
    inner.Add("k", std::string("v"));
    PropertyListDictionary outer;
    outer.Add("z", std::int64_t{1});
    outer.Add("", PropertyListArray{PropertyList(inner), PropertyList(PropertyListArray())});
    outer.Add("\u00FC & <key>", PropertyListDictionary());
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte) {
        allBytes.push_back(static_cast<char>(byte));
    }
    PropertyListArray values;
    for (const std::int64_t value : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{127}, std::int64_t{255},
                                     std::int64_t{65535}, std::int64_t{4294967295}, INT64_MAX, INT64_MIN}) {
        values.emplace_back(value);
    }
    for (const std::uint64_t value : {std::uint64_t{1} << 63, UINT64_MAX}) { // once came back negative
        values.push_back(PropertyListUnsigned(value));
    }
    for (const double value : {0.0, 1.5, -0.1, 1e300, 5e-324, 1.0 / 3, HUGE_VAL}) {
        values.emplace_back(value);
    }
    for (const char *value : {"", "text", " a\t\n b ", "<&>\"']]>", "\u00C4\u20AC\U0001F600", "\x7F\u0080"}) {
        values.emplace_back(std::string(value));
    }
    for (const std::string &value : {std::string(), std::string(1, '\0'), std::string("ab"), allBytes}) {
        values.emplace_back(PropertyListData{value});
    }
    for (const double seconds : {0.0, 730'987'198.0, -3'155'760'000.0}) {
        values.emplace_back(PropertyListDate{seconds});
    }
    values.emplace_back(true);
    values.emplace_back(false);
    values.emplace_back(PropertyListArray());
    values.emplace_back(outer);
    return values;
}

inline constexpr std::string_view kEveryValueInPython = R"(
from datetime import datetime
values = [0, -1, 127, 255, 65535, 2**32 - 1, 2**63 - 1, -2**63, 2**63, 2**64 - 1,
          0.0, 1.5, -0.1, 1e300, 5e-324, 1 / 3, float('inf'),
          '', 'text', ' a\t\n b ', '<&>"\']]>', '\u00C4\u20AC\U0001F600', '\x7F\x80',
          b'', b'\0', b'ab', bytes(range(256)),
          datetime(2001, 1, 1), datetime(2024, 3, 1, 11, 59, 58), datetime(1901, 1, 1),
          True, False, [], {'z': 1, '': [{'k': 'v'}, []], '\u00FC & <key>': {}}]
)";

} // namespace drevix::test
