#include "platform/files/files.h"
#include "tests/platform/plist/property_list_support.h"
#include "tests/support/failing_new.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

// Runs `operation` with its first, second, ... allocation failing, until none is left to fail; `afterwards`
// looks at what each run but the last has left.
template <typename Operation, typename Check>
void FailEachAllocation(int least, const Operation &operation, const Check &afterwards) {
    for (int failIn = 1;; ++failIn) {
        OSErr status = noErr;
        const bool wasHit =
            test::MeetsFaultOrNew(failIn, test::Lasts::Once, test::kOfNew, [&] { status = operation(); });
        ASSERT_EQ(status, wasHit ? memFullErr : noErr) << failIn;
        EXPECT_EQ(OpenFileCount(), 0);
        if (!wasHit) {
            EXPECT_GT(failIn, least);
            return;
        }
        afterwards();
    }
}

TEST(Memory, NoRoomForAList_IsReportedAndLeavesTheOldFile) {
    test::ScratchFolder scratch;
    const std::string path = scratch.Path("config/list");
    PropertyListArray list = test::EveryValue();
    list.emplace_back(std::string(100'000, 'x'));
    test::WriteWhole(path, "old bytes");
    FailEachAllocation(
        5, [&] { return test::WriteList(path, list); },
        [&] { EXPECT_EQ(test::ReadWhole(path), "old bytes"); });
    EXPECT_EQ(test::ReadList(path).Text(), PropertyListArrayText(list));
    const std::string binary = scratch.Path("binary");
    ASSERT_EQ(std::system(("plistutil -i " + path + " -o " + binary).c_str()), 0);
    const PropertyListElementHandler take = [](PropertyList &) { return true; };
    for (const std::string &written : {path, binary}) {
        PropertyListProblem problem;
        FailEachAllocation(
            5, [&] { return ReadPropertyListArray(written, take, &problem); }, [] {});
    }
}

} // namespace
} // namespace drevix
