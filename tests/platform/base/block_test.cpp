#include "platform/base/block.h"

#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(Block, ManySmallGrowths_AskForMemoryFewTimes) {
    const FaultyAllocator counter(kNoFault, Lasts::Once);
    Block block;
    for (std::size_t size = 1; size <= 1'000'000; ++size) {
        ASSERT_EQ(block.Resize(size), noErr);
    }
    EXPECT_LT(counter.Calls(), 60);
}

TEST(Block, FailedGrowth_LeavesTheBlockAsItWas) {
    Block block;
    ASSERT_EQ(block.Resize(4), noErr);
    std::memcpy(block.Data(), "keep", 4);
    {
        FaultyAllocator faults(1, Lasts::ForEver);
        EXPECT_EQ(block.Resize(1000), memFullErr);
        EXPECT_EQ(block.Size(), 4U);
        EXPECT_EQ(std::memcmp(block.Data(), "keep", 4), 0);
        EXPECT_EQ(block.Resize(2), noErr) << "shrinking needs no memory";
    }
    // The exact size may be had when the reserve cannot.
    FaultyAllocator once(1, Lasts::Once);
    EXPECT_EQ(block.Resize(5), noErr);
    EXPECT_EQ(std::memcmp(block.Data(), "ke", 2), 0);
}

} // namespace
} // namespace drevix::test
