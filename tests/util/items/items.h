// What the tests of alias files share: a scratch home, and a disk that shows a folder of it as a volume.
#pragma once

#include "platform/catalog/apple_double.h"
#include "platform/catalog/named_files.h"
#include "platform/catalog/resource_file.h"
#include "platform/files/disk.h"
#include "settings/app_prefs.h"
#include "tests/support/testing.h"
#include "util/items/alias_file.h"
#include "util/items/file_references.h"
#include "util/items/items_folder.h"

namespace drevix::test {

// The real disk, but for a mount table that has "/" and "/media/Data" alone, the latter a file system of the
// given type with what lies in `folder`. Its root has inode 2, and what is looked at in it 16, 17, ...
class PretendDisk : public ScopedDisk {
  public:
    PretendDisk(const ScratchFolder &scratch, const std::string &folder, const std::string &type)
        : fFolder(folder), fTable(scratch.Path("mountinfo")) {
        WriteWhole(fTable, "1 0 8:1 / / rw - ext4 /dev/a rw\n2 1 8:2 / /media/Data rw shared:2 - " + type +
                               " /dev/b rw\n");
    }

    int Open(const char *path, int flags, mode_t mode) override {
        const bool isTable = std::string_view(path) == "/proc/self/mountinfo";
        return Disk::Open(isTable ? fTable.c_str() : Mapped(path).c_str(), flags, mode);
    }
    int StatusAt(const char *path, struct stat *status) override {
        const int result = Disk::StatusAt(Mapped(path).c_str(), status);
        if (result == 0 && Mapped(path) != path) {
            status->st_dev = 1;
            status->st_ino =
                fInodes.try_emplace(path, fInodes.empty() ? 2 : 15 + fInodes.size()).first->second;
        }
        return result;
    }
    int RealPath(const char *path, std::string *real) override {
        if (Mapped(path) == path) {
            return Disk::RealPath(path, real);
        }
        *real = path;
        return fs::exists(Mapped(path)) ? 0 : -1;
    }

  private:
    [[nodiscard]] std::string Mapped(std::string_view path) const {
        constexpr std::string_view kRoot = "/media/Data";
        return path.starts_with(kRoot) ? fFolder + std::string(path.substr(kRoot.size())) : std::string(path);
    }

    std::string fFolder;
    std::string fTable;
    std::map<std::string, ino_t> fInodes;
};

class ItemsTest : public testing::Test {
  protected:
    [[nodiscard]] std::string ItemsFolder() const {
        return fScratch.Preferences() + "/com.halcyra.drevix.stuff";
    }
    [[nodiscard]] std::string Item(const std::string &name) const { return ItemsFolder() + "/" + name; }
    [[nodiscard]] Names ItemNames() const { return ScratchFolder::Names(ItemsFolder()); }
    // A file of the scratch home with contents, and its path.
    std::string File(const std::string &name, std::string_view bytes = "x") const {
        const std::string path = fScratch.Path(name);
        fs::create_directories(fs::path(path).parent_path());
        WriteWhole(path, bytes);
        return path;
    }
    static FSSpec Spec(const std::string &path) {
        FSSpec spec{};
        const OSErr status = GetFSSpecFromNSString(path.c_str(), &spec, MissingItem::Allowed);
        EXPECT_TRUE(status == noErr || status == fnfErr) << path << ": " << status;
        return spec;
    }
    static void SetInfo(const std::string &path, const FInfo &info) {
        EXPECT_EQ(FSpSetFInfo(Spec(path), info), noErr) << path;
    }
    // The alias made of an item, as its own files say.
    struct Made {
        OSErr status;
        FInfo info;
        std::vector<Resource> resources;
    };
    Made MakeAlias(const std::string &path, const std::string &name = "alias") {
        fs::create_directories(ItemsFolder());
        Made made{};
        made.status = CreateAliasFile(Spec(path), Spec(Item(name)));
        AppleDouble appleDouble;
        if (made.status == noErr && ReadAppleDouble(Item(name), &appleDouble) == noErr) {
            made.info = GetFInfo(appleDouble);
            EXPECT_EQ(ParseResourceFork(std::as_bytes(std::span(appleDouble.resourceFork)), &made.resources),
                      noErr);
        }
        return made;
    }

    ScratchFolder fScratch;
};

} // namespace drevix::test
