// The catalog: volumes, folder ids and names, and what becomes of names that the platform cannot hold.

#include "platform/catalog/catalog.h"

#include "platform/catalog/apple_double.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/catalog/resource_file.h"
#include "platform/files/disk.h"
#include "tests/support/testing.h"

#include <sys/mount.h>

namespace drevix::test {
namespace {

std::string Text(const Str63 &name) {
    return {name.begin() + 1, name.begin() + 1 + name[0]};
}

CatalogInfo Ask(std::int32_t folder, std::int16_t index, const Str63 &name = {}) {
    CatalogInfo info{};
    info.ioVRefNum = kRootVolume;
    info.ioFDirIndex = index;
    info.ioDrDirID = folder;
    info.ioName = name;
    return info;
}

TEST(Catalog, Indexes_CountEntriesWithoutCompanions) {
    const ScratchFolder scratch;
    const std::int32_t folder = FolderIdFromPath(scratch.Path());
    AppleDouble appleDouble;
    SetFInfo(appleDouble, {FourCharCode("TEXT"), FourCharCode("ttxt"), kIsAlias});
    WriteWhole(scratch.Path("b"), "");
    ASSERT_EQ(WriteAppleDouble(scratch.Path("b"), appleDouble), noErr);
    ASSERT_EQ(WriteAppleDouble(scratch.Path("alone"), appleDouble), noErr);
    Names seen;
    for (std::int16_t index = 1;; ++index) {
        CatalogInfo info = Ask(folder, index);
        const OSErr status = PBGetCatInfoSync(&info);
        if (status != noErr) {
            EXPECT_EQ(status, fnfErr);
            break;
        }
        seen.push_back(Text(info.ioName) + (info.ioFlAttrib != 0 ? "/" : ""));
        EXPECT_EQ(info.ioDrParID, folder);
        EXPECT_EQ(info.ioFlFndrInfo.fdFlags, Text(info.ioName) == "b" ? kIsAlias : 0);
    }
    EXPECT_EQ(seen, (Names{"._alone", "b", "config/"}));
}

TEST(Catalog, Volumes_AreTheMountedFileSystems) {
    const ScratchFolder scratch;
    const std::string root = scratch.Path("a b\\c:d");
    fs::create_directory(root);
    const bool isMounted = ::mount("none", root.c_str(), "tmpfs", 0, nullptr) == 0; // the superuser's right
    const std::vector<std::pair<std::string, std::string>> all = {{"/proc", "proc"}, {root, "a b\\c/d"}};
    for (const auto &[mountPoint, name] : std::span(all).first(isMounted ? 2 : 1)) {
        VolumeInfo info = {NumberOfVolume(mountPoint), {}, -1, {}};
        EXPECT_EQ(PBHGetVInfoSync(&info), noErr) << mountPoint;
        EXPECT_EQ(Text(info.ioName), name);
        EXPECT_EQ(info.ioVFSID, kLocalFileSystem);
        EXPECT_EQ(info.mountPoint, mountPoint);
        CatalogInfo itself = Ask(kRootFolder, -1);
        itself.ioVRefNum = info.ioVRefNum;
        EXPECT_EQ(PBGetCatInfoSync(&itself), noErr);
        EXPECT_EQ(itself.ioDrParID, kRootParentFolder);
    }
    CatalogInfo system = Ask(kRootFolder, -1);
    EXPECT_EQ(PBGetCatInfoSync(&system), noErr);
    EXPECT_EQ(system.ioDrParID, kRootParentFolder);
    EXPECT_EQ(Text(system.ioName), "File System");
    if (isMounted) {
        EXPECT_EQ(::umount(root.c_str()), 0);
        VolumeInfo gone = {NumberOfVolume(root), {}, -1, {}};
        EXPECT_EQ(PBHGetVInfoSync(&gone), nsvErr);
    }
    const std::vector<Volume> volumes = {{1, 0, "/"}, {2, 0, "/a/b"}, {3, 0, "/a"}};
    for (const auto &[path, number] : std::initializer_list<std::pair<const char *, int>>{
             {"/", 1}, {"/x", 1}, {"/ab", 1}, {"/a", 3}, {"/a/bc", 3}, {"/a/b", 2}, {"/a/b/c", 2}}) {
        EXPECT_EQ(VolumeOfPath(volumes, path)->number, number) << path;
    }
}

constexpr const char *kMountTable = "/proc/self/mountinfo";

TEST(Catalog, MountTable_IsReadAsFarAsItMakesSense) {
    const ScratchFolder scratch;
    WriteWhole(scratch.Path("table"), "1 0 8:1 / /a\\040b\\134 rw shared:1 - nfs4 server /x\n"
                                      "2 0 8:1 / /hidden rw - ext4 x y\n"
                                      "3 0 8:1 / /hidden rw master:2 unbindable - vfat x y\n"
                                      "4 0 8:1 / relative rw - ext4 x y\n"
                                      "5 0 8:1 / /cut rw\n\n-\n6 0 8:1 / /tail\\04 rw - ext4");
    const ExchangedFile disk(kMountTable, scratch.Path("table"));
    std::vector<Volume> volumes;
    ASSERT_EQ(ListVolumes(&volumes), noErr);
    std::vector<std::pair<std::string, int>> found;
    for (const Volume &volume : volumes) {
        found.emplace_back(volume.root, volume.fileSystem);
    }
    EXPECT_EQ(found, (std::vector<std::pair<std::string, int>>{{"/a b\\", kServerFileSystem},
                                                               {"/hidden", kDosFileSystem},
                                                               {"/tail\\04", kLocalFileSystem},
                                                               {"/", kLocalFileSystem}}));
    const ExchangedFile none(kMountTable, scratch.Path("none"));
    EXPECT_EQ(ListVolumes(&volumes), noErr);
    EXPECT_EQ(volumes.size(), 1U);
    const ExchangedFile folder(kMountTable, scratch.Path());
    VolumeInfo info = {kRootVolume, {}, 0, {}};
    std::int16_t number = 0;
    std::int32_t id = 0;
    EXPECT_EQ(PBHGetVInfoSync(&info), notAFileErr);
    EXPECT_EQ(FindFolder(kRootVolume, kPreferencesFolderType, kDontCreateFolder, &number, &id), noErr)
        << "the preferences do not depend on the table";
    EXPECT_EQ(FindFolder(NumberOfVolume("/x"), kPreferencesFolderType, kDontCreateFolder, &number, &id),
              notAFileErr);
}

TEST(Catalog, Kinds_AreTold) {
    const ScratchFolder scratch;
    fs::create_symlink("elf", scratch.Path("link"));
    ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
    const std::int32_t folder = FolderIdFromPath(scratch.Path());
    // Of what is there, the bytes are null.
    using Row = std::tuple<std::string, const char *, mode_t, OSType>;
    for (const auto &[name, bytes, mode, type] : std::initializer_list<Row>{
             {"elf", "\177ELF", 0700, kApplicationType},
             {"script", "#!/bin/sh", 0700, kApplicationType},
             {"a.desktop", "", 0700, kApplicationType},
             {"data", "data", 0700, kUnknownType},
             {"empty", "", 0700, kUnknownType},
             {"plain", "#!", 0600, kUnknownType},
             {"pipe", nullptr, 0, kUnknownType},
             {"config", nullptr, 0, kUnknownType},
             {"link", nullptr, 0, kSymbolicLinkType},
         }) {
        if (bytes != nullptr) {
            WriteWhole(scratch.Path(name), bytes);
            ::chmod(scratch.Path(name).c_str(), mode);
        }
        CatalogInfo info = Ask(folder, 0, Str63FromMacRoman(name));
        EXPECT_EQ(PBGetCatInfoSync(&info), noErr);
        EXPECT_EQ(info.ioFlFndrInfo.fdType, type) << name;
    }
}

TEST(Catalog, WhatCannotBe_HasItsStatus) {
    const ScratchFolder scratch;
    WriteWhole(scratch.Path("file"), "");
    WriteWhole(scratch.Path("damaged"), "");
    WriteWhole(scratch.Path("._damaged"), "no AppleDouble file");
    const std::int32_t folder = FolderIdFromPath(scratch.Path());
    const FSSpec bad = {kRootVolume, folder, Str63FromMacRoman("")};
    const FSSpec gone = {kRootVolume, FolderIdFromPath(scratch.Path("gone")), Str63FromMacRoman("x")};
    const std::string zero("a\0b", 3);
    FSRef ref;
    FSSpec spec{};
    FInfo finder{};
    FileRef file = 0;
    std::int16_t number = 0;
    std::int32_t id = 0;
    std::vector<Str63> names;
    const auto ask = [](std::int16_t volume, std::int32_t itsId) {
        CatalogInfo info = Ask(itsId, -1);
        info.ioVRefNum = volume;
        return PBGetCatInfoSync(&info);
    };
    ResourceFile resources;
    const std::vector<std::pair<OSErr, OSErr>> rows = {
        {FSPathMakeRef(zero, &ref), bdNamErr},
        {FSPathMakeRef(scratch.Path("none"), &ref), fnfErr},
        {FSRefAtName({scratch.Path()}, "", &ref), fnfErr},
        {FSRefAtName({scratch.Path()}, "a/b", &ref), bdNamErr},
        {FSRefAtName({scratch.Path()}, zero, &ref), bdNamErr},
        {FSSpecFromRef({""}, &spec), bdNamErr},
        {FSSpecFromRef({scratch.Path("file")}, &spec, &id), paramErr},
        {FSpCreate(bad, 0, 0, -1), bdNamErr},
        {FSpCreate(gone, 0, 0, -1), fnfErr},
        {FSpCreate({kRootVolume, folder, Str63FromMacRoman("file")}, 0, 0, -1), dupFNErr},
        {FSpOpenDF(bad, fsRdPerm, &file), bdNamErr},
        {FSpOpenDF(gone, fsRdPerm, &file), fnfErr},
        {FSpDirCreate(bad, -1, &id), bdNamErr},
        {FSpDelete(bad), bdNamErr},
        {FSpSetFInfo(bad, {}), bdNamErr},
        {FSpGetFInfo(bad, &finder), bdNamErr},
        {FSpGetFInfo(gone, &finder), fnfErr},
        {FSpGetFInfo({kRootVolume, folder, Str63FromMacRoman("config")}, &finder), notAFileErr},
        {FSpCreateResFile(bad, 0, 0, -1), bdNamErr},
        {FSpCreateResFile({kRootVolume, folder, Str63FromMacRoman("damaged")}, 0, 0, -1), dupFNErr},
        {resources.Open(bad, fsRdPerm), bdNamErr},
        {ask(kRootVolume, FolderIdFromPath(scratch.Path("file"))), dirNFErr},
        {ask(kRootVolume, kRootParentFolder), dirNFErr},
        {ask(kRootVolume, 9999), dirNFErr},
        {ask(-29999, kRootFolder), nsvErr},
        {ListFolder(-29999, folder, &names), nsvErr},
        {ListFolder(kRootVolume, 9999, &names), dirNFErr},
        {ListFolder(kRootVolume, gone.parID, &names), dirNFErr},
        {FindFolder(NumberOfVolume("/proc"), kPreferencesFolderType, kDontCreateFolder, &number, &id),
         fnfErr},
        {FindFolder(NumberOfVolume("/proc"), FourCharCode("none"), kDontCreateFolder, &number, &id), fnfErr},
        {Gestalt(FourCharCode("none"), &id), gestaltUndefSelectorErr},
    };
    for (const auto &[status, expected] : rows) {
        EXPECT_EQ(status, expected) << "row " << &status - &rows[0].first;
    }
    EXPECT_EQ(Gestalt(FourCharCode("alis"), &id), noErr);
    // The roots of volumes, as specifications and as folders.
    EXPECT_EQ(RootOfVolume(0) + FolderPath(0, FolderIdFromPath("/")), "//");
    for (const char *root : {"/", "/proc"}) {
        EXPECT_EQ(FSSpecFromRef({root}, &spec, &id), noErr);
        EXPECT_EQ(id, kRootFolder);
        EXPECT_EQ(PathFromSpec(spec), root);
        EXPECT_EQ(FindFolder(spec.vRefNum, kVolumeRootFolderType, kDontCreateFolder, &number, &id), noErr);
        EXPECT_EQ(number, spec.vRefNum);
    }
}

TEST(Catalog, NamesBeyondThePlatform_LeadBackToTheirFiles) {
    const ScratchFolder scratch;
    const std::string longName(200, 'l');
    const Names names = {"plain",  "Fl\u00FCge",   "a:b",     "\u5199\u771F.jpeg", "\u96C6\u3081.jpeg",
                         longName, longName + "2", "bad\xFF", "e\u0301",           "line\nend"};
    const std::set<std::string> exact = {"plain", "Fl\u00FCge", "a:b", "line\nend"};
    std::set<std::string> seen;
    for (const std::string &name : names) {
        WriteWhole(scratch.Path(name), name);
        FSRef ref;
        FSSpec spec{};
        ASSERT_EQ(FSPathMakeRef(scratch.Path(name), &ref), noErr);
        ASSERT_EQ(FSSpecFromRef(ref, &spec), noErr);
        EXPECT_EQ(PathFromSpec(spec), scratch.Path(name));
        EXPECT_EQ(Text(spec.name).find('#') == std::string::npos, exact.contains(name)) << name;
        EXPECT_EQ(FitsPascalName(name, 63), exact.contains(name)) << name;
        EXPECT_TRUE(seen.insert(Text(spec.name)).second) << name;
    }
    std::vector<Str63> listed;
    ASSERT_EQ(ListFolder(kRootVolume, FolderIdFromPath(scratch.Path()), &listed), noErr);
    EXPECT_EQ(listed.size(), names.size() + 1);
    for (const Str63 &name : listed) {
        CatalogInfo info = Ask(FolderIdFromPath(scratch.Path()), 0, name);
        EXPECT_EQ(PBGetCatInfoSync(&info), noErr) << Text(name);
    }
    EXPECT_EQ(DistinctName("some report.txt", 31, 0x1A2B3C4D), "some report#1A2B3C4D.txt");
    EXPECT_EQ(DistinctName(longName + ".jpeg", 31, 1), std::string(17, 'l') + "#00000001.jpeg");
    EXPECT_EQ(DistinctName("version 1.of many", 31, 1), "version 1.of many#00000001");
}

TEST(Catalog, Delete_TakesTheCompanionAndNothingElse) {
    const ScratchFolder scratch;
    const auto spec = [&](const char *name) {
        return FSSpec{kRootVolume, FolderIdFromPath(scratch.Path()), Str63FromMacRoman(name)};
    };
    for (const char *name : {"file", "alone"}) {
        ASSERT_EQ(WriteAppleDouble(scratch.Path(name), {}), noErr);
    }
    WriteWhole(scratch.Path("file"), "");
    WriteWhole(scratch.Path("other"), "");
    WriteWhole(scratch.Path("._other"), "no AppleDouble file");
    EXPECT_EQ(FSpDelete(spec("file")), noErr);
    EXPECT_EQ(FSpDelete(spec("alone")), noErr);
    EXPECT_EQ(FSpDelete(spec("other")), noErr);
    EXPECT_EQ(FSpDelete(spec("none")), fnfErr);
    EXPECT_EQ(FSpDelete(spec("config")), notAFileErr);
    EXPECT_EQ(ScratchFolder::Names(scratch.Path()), (Names{"._other", "config"}));
    std::int32_t folder = 0;
    EXPECT_EQ(FSpDirCreate(spec("config"), -1, &folder), dupFNErr);
    EXPECT_EQ(FSpSetFInfo(spec("none"), {}), fnfErr);
    EXPECT_EQ(FSpSetFInfo(spec("other"), {}), mapReadErr);
}

} // namespace
} // namespace drevix::test
