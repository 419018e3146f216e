#include "platform/plist/json.h"
#include "tests/platform/plist/property_list_support.h"

namespace drevix {
namespace {

TEST(JsonText, Values_AreWrittenForOtherPrograms) {
    const std::pair<PropertyList, std::string> rows[] = {
        {PropertyList(INT64_MIN), "-9223372036854775808"},
        {PropertyList(0.1), "0.1"},
        {PropertyList(HUGE_VAL), "null"}, // JSON has no infinity
        {PropertyList(std::string("\"\\/\n\x01\x7F\u00E4\U0001F600")),
         "\"\\\"\\\\/\\n\\u0001\x7F\u00E4\U0001F600\""},
        {PropertyList(std::string("caf\xE9")), "\"caf\uFFFD\""},
        {PropertyList(std::string("a\0b", 3)), "\"a\\u0000b\""},
        {PropertyList(PropertyListData{std::string("\0\xFF", 2)}), "\"AP8=\""},
        {PropertyList(PropertyListDate{1.5}), "1.5"},
        {PropertyList(PropertyListDictionary()), "{}"},
    };
    for (const auto &[value, expected] : rows) {
        EXPECT_EQ(JsonText(value), expected);
    }
}

TEST(JsonText, Dictionaries_KeepTheirOrderAndTheLastValueOfAKey) {
    PropertyListDictionary dictionary;
    dictionary.Add("z", std::int64_t{1});
    dictionary.Add("a", PropertyListArray{PropertyList(false)});
    dictionary.Add("z", std::int64_t{2});
    EXPECT_EQ(JsonText(dictionary), "{\n  \"z\": 2,\n  \"a\": [\n    false\n  ]\n}");
}

} // namespace
} // namespace drevix
