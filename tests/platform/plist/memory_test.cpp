#include "platform/files/files.h"
#include "tests/platform/plist/property_list_support.h"
#include "tests/support/failing_new.h"

namespace drevix::test {
namespace {

TEST(Memory, NoRoomForAList_IsReportedAndLeavesTheOldFile) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("config/list");
    PropertyListArray list = EveryValue();
    list.emplace_back(std::string(100'000, 'x'));
    WriteWhole(path, "old bytes");
    ForEachFault(5, {kOfNew}, [&](const FaultAt &fault) {
        OSErr status = noErr;
        const bool wasHit = fault.Meets([&] { status = WriteList(path, list); });
        EXPECT_EQ(status, wasHit ? memFullErr : noErr);
        EXPECT_EQ(OpenFileCount(), 0);
        EXPECT_TRUE(!wasHit || ReadWhole(path) == "old bytes");
        return wasHit;
    });
    EXPECT_EQ(ReadList(path).Text(), PropertyListArrayText(list));
    const std::string binary = scratch.Path("binary");
    ASSERT_EQ(std::system(("plistutil -i " + path + " -o " + binary).c_str()), 0);
    const PropertyListElementHandler take = [](PropertyList &) { return true; };
    for (const std::string &written : {path, binary}) {
        ForEachFault(5, {kOfNew}, [&](const FaultAt &fault) {
            PropertyListProblem problem;
            OSErr status = noErr;
            const bool wasHit = fault.Meets([&] { status = ReadPropertyListArray(written, take, &problem); });
            EXPECT_EQ(status, wasHit ? memFullErr : noErr);
            EXPECT_EQ(OpenFileCount(), 0);
            return wasHit;
        });
    }
}

} // namespace
} // namespace drevix::test
