#include "device/device_map.h"

#include "tests/device/control_words.h"

namespace drevix::test {
namespace {

TEST(DeviceMap, LinesThatMakeNoSense_AreToldAndLeftOut) {
    static const std::pair<const char *, const char *> kRows[] = {
        {"ringx axis=ABS_X", R"(unknown control "ringx")"},
        {"ringXYRest key=BTN_1", R"(unknown control "ringXYRest")"},
        {"ringX axis=ABS_FOO", R"(axis must be an axis such as ABS_X, not "ABS_FOO")"},
        {"ringX axis=REL_X", R"(axis must be an axis such as ABS_X, not "REL_X")"},
        {"buttonV key=ABS_X", R"(key must be a key or button such as KEY_F13 or BTN_0, not "ABS_X")"},
        {"ringX", "ringX takes axis= or dial="},
        {"ringLeft axis=ABS_X", "ringLeft takes key="},
        {"ringX axis=ABS_X per=2", "per is for dial="},
        {"ringX axis=ABS_X reverse=2", "reverse must be a number from 0 to 1"},
        {"tuner dial=REL_DIAL wraps=256",
         "wraps is for a counter such as ABS_WHEEL: REL_DIAL tells how far it was turned"},
        {"tuner dial=REL_DIAL rest=150", "rest is for the ring: the tuner has none"},
        {"ringX axis=ABS_X colour=red", R"(unknown field "colour")"},
        {"ringX axis=ABS_X axis=ABS_Y", "axis is given twice"},
        {"ringX axis", R"("axis" needs a value: axis=...)"},
        {"axis=ABS_X", R"(a line starts with "device" or a control, not with "axis"=)"},
        {"ringX axis=\"ABS_X", "the quote of axis is not closed"},
        {"buttonV key=BTN_0", "BTN_0 has a control already, in line 2"},
        {"device", "a device needs vendor=, product= or name="},
        {"device name=x", "this device has no controls"},
    };
    for (const auto &[line, problem] : kRows) {
        std::vector<MapProblem> problems;
        const auto maps =
            ParseDeviceMaps("device vendor=1 # one\r\nbuttonI key=BTN_0\n\n" + std::string(line), &problems);
        ASSERT_EQ(problems.empty() ? "" : problems.front().text, problem);
        EXPECT_EQ(problems.front().line, 4) << line;
        ASSERT_EQ(maps.size(), 1U) << line;
        EXPECT_EQ(maps.front().inputs.size(), 1U) << line;
    }
    std::vector<MapProblem> problems;
    EXPECT_TRUE(ParseDeviceMaps("ringX axis=ABS_X", &problems).empty());
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems.front().text, "a \"device\" line must come before this");
}

TEST(DeviceMap, AllWordsOfADeviceMustFit) {
    constexpr const char *kMaps =
        "device vendor=0x1234 product=1\ndevice name=\"Test dial\" vendor=0x1234\nringX axis=ABS_X\n"
        "device vendor=0x1234\nbuttonI key=BTN_0\nbuttonP key=KEY_F13\n";
    std::vector<MapProblem> problems;
    const auto maps = ParseDeviceMaps(kMaps, &problems);
    ASSERT_EQ(maps.size(), 2U);
    const auto find = [&](const std::function<void(InputDescription &)> &change) {
        InputDescription device = MakeDevice();
        change(device);
        const DeviceMap *map = FindDeviceMap(maps, device);
        return map == nullptr ? -1 : static_cast<int>(map - maps.data());
    };
    EXPECT_EQ(find([](auto & /*device*/) {}), 0);
    EXPECT_EQ(find([](auto &device) { device.name = "Other", device.product = 1; }), 0);
    EXPECT_EQ(find([](auto &device) { device.name = "Other"; }), 1);
    EXPECT_EQ(find([](auto &device) { device.axes.clear(); }), 1);
    EXPECT_EQ(find([](auto &device) { device.axes.clear(), device.keys.reset(); }), -1);
    EXPECT_EQ(find([](auto &device) { device.vendor = 2; }), -1);
    EXPECT_EQ(find([](auto &device) { device.keys.set(30).set(57); }), -1) << "a keyboard";
    EXPECT_EQ(find([](auto &device) { device.name = kOwnInputDeviceName; }), -1);
}

TEST(DeviceMap, TheMapsThatComeWithIt_UseEveryControl) {
    std::set<SlotIndex> used;
    for (const auto &file : fs::directory_iterator(DREVIX_TEST_DATA "/../../resources/maps")) {
        std::vector<MapProblem> problems;
        const auto maps = ParseDeviceMaps(ReadWhole(file.path()), &problems);
        EXPECT_TRUE(problems.empty())
            << file.path() << ' ' << problems.front().line << ": " << problems.front().text;
        ASSERT_EQ(maps.size(), 1U) << file.path();
        for (const MappedInput &input : maps.front().inputs) {
            used.insert(input.low);
            used.insert(input.high);
        }
    }
    for (const ControlSlot &control : kControlSlots) {
        EXPECT_TRUE(used.contains(control.slot) || control.slot == 8 || control.slot == 9) << control.key;
    }
    // The example of the page.
    const std::string page = ReadWhole(DREVIX_TEST_DATA "/../../docs/device-maps.md");
    const std::size_t start = page.find("    # comment");
    std::vector<MapProblem> problems;
    EXPECT_EQ(
        ParseDeviceMaps(page.substr(start, page.find("\n\n", start) - start), &problems).at(0).inputs.size(),
        4U);
    EXPECT_TRUE(problems.empty());
}

} // namespace
} // namespace drevix::test
