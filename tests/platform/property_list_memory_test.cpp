#include "platform/files.h"
#include "platform/status.h"
#include "tests/platform/property_list_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

// The n-th allocation from now on fails, once; 0 for none.
int gFailIn = 0;

bool FailsNow() {
    return gFailIn > 0 && --gFailIn == 0;
}

} // namespace

// All of this program's `new` comes here; only a test that sets gFailIn sees a difference.
void *operator new(std::size_t size) {
    void *memory = FailsNow() ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
// Not inlined: the compiler would else see malloc's memory freed where it knows only of a `new`.
[[gnu::noinline]] void operator delete(void *memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void *memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace drevix {
namespace {

// Runs `operation` with its first, second, ... allocation failing, until none is left to fail; `afterwards`
// looks at what each run but the last has left.
template <typename Operation, typename Check>
void FailEachAllocation(const Operation &operation, const Check &afterwards) {
    for (int failIn = 1;; ++failIn) {
        gFailIn = failIn;
        const OSErr status = operation();
        const bool wasHit = gFailIn == 0;
        gFailIn = 0;
        ASSERT_EQ(status, wasHit ? memFullErr : noErr) << failIn;
        EXPECT_EQ(OpenFileCount(), 0);
        if (!wasHit) {
            EXPECT_GT(failIn, 5);
            return;
        }
        afterwards();
    }
}

TEST(PropertyListMemory, NoRoomToRead_IsReported) {
    test::ScratchFolder scratch;
    const std::string xml = scratch.Path("xml");
    const std::string binary = scratch.Path("binary");
    ASSERT_EQ(test::WriteList(xml, test::EveryValue()), noErr);
    ASSERT_EQ(std::system(("plistutil -i " + xml + " -o " + binary).c_str()), 0);
    const PropertyListElementHandler take = [](PropertyList &) { return true; };
    for (const std::string &path : {xml, binary}) {
        PropertyListProblem problem;
        FailEachAllocation([&] { return ReadPropertyListArray(path, take, &problem); }, [] {});
    }
}

TEST(PropertyListMemory, NoRoomToWrite_LeavesTheOldFile) {
    test::ScratchFolder scratch;
    const std::string path = scratch.Path("config/list");
    PropertyListArray list = test::EveryValue();
    list.emplace_back(std::string(100'000, 'x'));
    test::WriteWhole(path, "old bytes");
    FailEachAllocation([&] { return test::WriteList(path, list); },
                       [&] { EXPECT_EQ(test::ReadWhole(path), "old bytes"); });
    EXPECT_EQ(test::ReadList(path).Text(), PropertyListArrayText(list));
}

} // namespace
} // namespace drevix
