// The largest base that a file can hold.
#include "platform/block.h"
#include "tests/qbase/file_support.h"

#include <cstring>
#include <sys/mman.h>

namespace drevix {
namespace {

using namespace test;

// Blocks of any size, of which only the first few bytes of a small one are kept on growing.
class VastAllocator : public BlockAllocator {
  public:
    VastAllocator() : fBefore(SetBlockAllocator(this)) {}
    ~VastAllocator() override {
        SetBlockAllocator(fBefore);
        ::munmap(fVast, kVast);
    }
    void *Reallocate(void *memory, std::size_t size) override {
        if (size < 0x100000) {
            return BlockAllocator::Reallocate(memory, size);
        }
        if (memory != fVast && memory != nullptr) {
            std::memcpy(fVast, memory, 10);
            BlockAllocator::Release(memory);
        }
        return size <= kVast ? fVast : nullptr;
    }
    void Release(void *memory) override {
        if (memory != fVast) {
            BlockAllocator::Release(memory);
        }
    }

  private:
    static constexpr std::size_t kVast = std::size_t{5} << 30; // addresses; the pages used are few
    void *fVast =
        ::mmap(nullptr, kVast, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    BlockAllocator *fBefore;
};

TEST(RecordBase, TwoGibibytes_AreRefusedToTheByte) {
    const VastAllocator vast;
    const QBaseOwner base = NewFileBase();
    const std::string data(1668, 'x');
    ASSERT_EQ(QBaseAddRecord(base.get(), "", 0), 0);
    const std::size_t most = 0x7FFF'FFFE; // records have even sizes
    ASSERT_EQ(base->records.Resize(most - 1678), noErr);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 1668), 1);
    const std::string before = State(base.get());
    EXPECT_EQ(QBaseAddRecord(base.get(), "", 0), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 0, data.data(), 1), kNoRecord);
    EXPECT_EQ(State(base.get()), before);
    EXPECT_EQ(base->records.Size(), most);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 1666), 1);
    EXPECT_EQ(base->records.Size(), most - 2);
}

} // namespace
} // namespace drevix
