#include "tests/platform/files/updates.h"
#include "tests/support/testing.h"

#include <sys/ioctl.h>

namespace drevix::test {
namespace {

// Linux's fs/ext4/ext4.h: stops the file system at once; with this flag the journal is not flushed first.
constexpr unsigned long kExt4Shutdown = _IOR('X', 125, std::uint32_t);
constexpr std::uint32_t kNoLogFlush = 2;

int Run(const std::string &command) {
    return std::system((command + " >/dev/null 2>&1").c_str());
}

// A small ext4 file system in a file, mounted while it lives.
class LoopMount {
  public:
    explicit LoopMount(const std::string &folder) : fImage(folder + "/image"), fPoint(folder + "/mounted") {
        fs::create_directory(fPoint);
        fReady = Run("truncate -s 16M " + fImage) == 0 && Run("mkfs.ext4 -q -F " + fImage) == 0 && Mount();
    }
    LoopMount(const LoopMount &) = delete;
    LoopMount &operator=(const LoopMount &) = delete;
    ~LoopMount() { Unmount(); }
    [[nodiscard]] bool IsReady() const { return fReady; }
    [[nodiscard]] const std::string &Point() const { return fPoint; }

    // The power fails: nothing more reaches the disk.
    bool Cut() const {
        const int folder = ::open(fPoint.c_str(), O_RDONLY | O_DIRECTORY);
        std::uint32_t flags = kNoLogFlush;
        const bool cut = ::ioctl(folder, kExt4Shutdown, &flags) == 0;
        ::close(folder);
        return cut;
    }
    bool Mount() const { return Run("mount -o loop " + fImage + " " + fPoint) == 0; }
    void Unmount() const { Run("umount " + fPoint); }

  private:
    std::string fImage;
    std::string fPoint;
    bool fReady = false;
};

// The power is cut before each call of an update in turn, and once after it.
TEST(PowerCut, AtEveryCall_LeavesTheOldOrTheNewFile) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "mounting a file system needs the superuser";
    }
    const std::string oldText(40'000, 'o');
    const std::string newText(70'000, 'n');
    for (int cutAt = 1;; ++cutAt) {
        ScratchFolder scratch;
        const LoopMount disk(scratch.Path());
        if (!disk.IsReady()) {
            GTEST_SKIP() << "no loop mounts here";
        }
        const std::string path = disk.Point() + "/f";
        ASSERT_EQ(UpdateFile(path, UpdateMethod::Replace, oldText), noErr);
        bool cut = false;
        bool cutWorked = true;
        OSErr status = noErr;
        {
            FaultyDisk faults(cutAt, Lasts::Once, EIO);
            faults.onFault = [&] {
                cut = true;
                cutWorked = disk.Cut();
            };
            status = UpdateFile(path, UpdateMethod::Replace, newText);
        }
        if (!cutWorked) {
            GTEST_SKIP() << "the file system cannot be shut down";
        }
        const bool saved = !cut && status == noErr;
        ASSERT_TRUE(cut || disk.Cut());
        disk.Unmount();
        ASSERT_TRUE(disk.Mount());
        const std::string now = ReadWhole(path);
        EXPECT_TRUE(now == oldText || now == newText) << cutAt << ": " << now.size() << " bytes";
        if (saved) {
            EXPECT_EQ(now, newText) << "a save that reported success was lost";
            EXPECT_GT(cutAt, 8);
            break;
        }
    }
}

} // namespace
} // namespace drevix::test
