#include "helper/devices_file.h"

#include "helperlink/device_text.h"

#include <gtest/gtest.h>

namespace drevix {
namespace {

TEST(DevicesFile, EveryFieldGoesToItsPlace) {
    DeviceList list{};
    std::string problem;
    ASSERT_TRUE(ParseDevices(
        "# two\n\n version=12.34\tserial=07060504030201 vendor=0x1234 product=22136 interface=255 "
        "vendorName=\"Halcyra Ltd\" productName=Veltrana\r\nproductName=\"\"",
        &list, &problem))
        << problem;
    ASSERT_EQ(list.count, 2);
    const ConnectedDevice &device = list.device[0];
    EXPECT_EQ(DeviceVersionText(device.productVers), "12.34");
    EXPECT_EQ(DeviceSerialText(device), "07060504030201");
    EXPECT_EQ(device.vendorID, 0x1234);
    EXPECT_EQ(device.productID, 0x5678);
    EXPECT_EQ(device.interfaceNum, 255);
    EXPECT_EQ(DeviceNameText(device.vendorName), "Halcyra Ltd");
    EXPECT_EQ(DeviceNameText(device.productName), "Veltrana");
    EXPECT_EQ(DeviceSerialText(list.device[1]), "n/a");
}

TEST(DevicesFile, WhatMakesNoSenseIsRefusedWhole) {
    for (const std::string line :
         {"version=1.5", "version=.05", "version=1.0a", "version=123.45", "version=1,05",
          "version=", "version", "colour=red", "serial=0706050403020", "serial=0706050403020g",
          "serial=070605040302011", "vendor=65536", "vendor=-1", "vendor=0x", "interface=256",
          "vendorName=\"open", "= =", "version=1.05 nonsense"}) {
        DeviceList list{};
        list.count = 3;
        std::string problem;
        EXPECT_FALSE(ParseDevices("version=1.05\n" + line + "\n", &list, &problem)) << line;
        EXPECT_EQ(problem.substr(0, 8), "line 2: ") << line;
        EXPECT_EQ(list.count, 3) << line;
        EXPECT_EQ(list.device[0].productVers, 0) << line;
    }
    DeviceList list{};
    std::string problem;
    EXPECT_TRUE(ParseDevices("version=1.05\nversion=1.05\nversion=1.05\nversion=1.05\n", &list, &problem));
    EXPECT_FALSE(AddDevice("version=1.05", &list, &problem));
    EXPECT_FALSE(AddDevice("productName=" + std::string(128, 'x'), &list, &problem));
}

} // namespace
} // namespace drevix
