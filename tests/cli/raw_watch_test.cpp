#include "cli/raw_watch.h"
#include "device/device_map.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

namespace drevix {
namespace {

// What is shown can be copied into a map, which is then for this very device.
TEST(RawWatch, WhatItShowsMakesAMap) {
    for (const std::string name : {"Test dial", "", "a \"quoted\" name", "#1 = dial"}) {
        InputDescription device;
        device.name = name;
        device.vendor = 0x1234;
        device.product = 0xA;
        device.keys.set(BTN_0);
        const std::string map = RawDeviceText(device) + "\nbuttonV " + RawEventText({EV_KEY, BTN_0, 1}) +
                                "\ntuner " + RawEventText({EV_REL, REL_DIAL, -2}) + "\nringX " +
                                RawEventText({EV_ABS, ABS_X, 127}) + "\n";
        std::vector<MapProblem> problems;
        const std::vector<DeviceMap> maps = ParseDeviceMaps(map, &problems);
        EXPECT_TRUE(problems.empty()) << map;
        EXPECT_NE(FindDeviceMap(maps, device), nullptr) << map;
        device.vendor = 1;
        EXPECT_EQ(FindDeviceMap(maps, device), nullptr) << map;
    }
    EXPECT_EQ(RawEventText({EV_SYN, SYN_REPORT, 0}) + RawEventText({EV_MSC, MSC_SCAN, 4}), "");
}

} // namespace
} // namespace drevix
