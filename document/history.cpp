#include "document/history.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"
#include "platform/files/user_lock.h"
#include "settings/device_prefs.h"
#include "util/crc32/crc32.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

using std::chrono::nanoseconds;
using std::chrono::system_clock;

constexpr std::string_view kFolder = "history";
constexpr std::size_t kMostLast = 10;
constexpr std::chrono::hours kMonth{24 * 31};
constexpr mode_t kMode = 0600;
constexpr mode_t kAnyRights = 0777;

// A kept file's name: when it was replaced, in nanoseconds since 1970, and its contents' check sum and length.
// Names sort by time.
constexpr const char *kNameFormat = "%019" PRIu64 "-%016" PRIx64;
constexpr std::size_t kTimeDigits = 19;
constexpr std::size_t kNameLength = kTimeDigits + 1 + 16;

// Nothing to keep, or to list, is no error.
OSErr UnlessMissing(OSErr status) {
    return status == fnfErr || status == dirNFErr ? OSErr{noErr} : status;
}

struct Kept {
    std::string name;
    KeptTime time;
};

std::string NameOf(const KeptTime &time) {
    std::array<char, 64> name{};
    const auto since = std::chrono::duration_cast<nanoseconds>(time.replaced.time_since_epoch()).count();
    std::snprintf(name.data(), name.size(), kNameFormat, static_cast<std::uint64_t>(since), time.contents);
    return name.data();
}

// The number that is all of the text.
std::optional<std::uint64_t> NumberOf(std::string_view text, int base) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<Kept> ParseName(const std::string &name) {
    const std::string_view text = name;
    if (text.size() != kNameLength || text[kTimeDigits] != '-') {
        return std::nullopt;
    }
    const auto since = NumberOf(text.substr(0, kTimeDigits), 10);
    const auto contents = NumberOf(text.substr(kTimeDigits + 1), 16);
    if (!since || !contents) {
        return std::nullopt;
    }
    const auto replaced = std::chrono::duration_cast<system_clock::duration>(nanoseconds(*since));
    return Kept{name, {system_clock::time_point(replaced), *contents}};
}

// The newest first; none for a folder that is not there.
OSErr ListFolder(const std::string &folder, std::vector<Kept> *all) {
    std::vector<std::string> names;
    if (CurrentDisk().ListFolder(folder.c_str(), &names) != 0) {
        return UnlessMissing(LastError());
    }
    for (const std::string &name : names) {
        if (std::optional<Kept> kept = ParseName(name)) {
            all->push_back(std::move(*kept));
        }
    }
    std::ranges::sort(*all, std::ranges::greater(), &Kept::name);
    return noErr;
}

std::uint64_t ContentsOf(std::string_view bytes) {
    std::uint32_t crc = 0;
    StandardCRC32(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &crc, nullptr);
    return std::uint64_t{crc} << 32 | static_cast<std::uint32_t>(bytes.size());
}

// Each settings file has a folder of its own, named for its real path's check sum. fnfErr for a file that is not there.
OSErr FolderFor(const std::string &settings, FolderCreation creation, std::string *folder) {
    std::string real;
    if (CurrentDisk().RealPath(settings.c_str(), &real) != 0) {
        return LastError();
    }
    std::string state;
    const OSErr status = StateFolder(creation, &state);
    if (status != noErr) {
        return status;
    }
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%016" PRIx64, ContentsOf(real));
    *folder = JoinPath(JoinPath(state, kFolder), name.data());
    return creation == kCreateFolder ? MakeFolders(*folder) : OSErr{noErr};
}

bool AreOneFile(const std::string &a, const std::string &b) {
    std::string target;
    struct stat first {};
    struct stat second {};
    Disk &disk = CurrentDisk();
    return FollowLinks(a, &target) == noErr && disk.StatusAt(target.c_str(), &first) == 0 &&
           disk.StatusAt(b.c_str(), &second) == 0 && first.st_ino == second.st_ino &&
           first.st_dev == second.st_dev;
}

// False if there is no such file.
bool MakePrivate(const std::string &path) {
    struct stat found {};
    if (CurrentDisk().StatusAt(path.c_str(), &found) != 0) {
        return false;
    }
    if ((found.st_mode & kAnyRights) != kMode) {
        const DiskDescriptor opened(CurrentDisk().Open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK, 0));
        if (opened) {
            CurrentDisk().SetMode(opened.Get(), kMode); // the folder is closed to others all the same
        }
    }
    return true;
}

// The local day, as one number.
int DayOf(system_clock::time_point time) {
    const std::time_t seconds = system_clock::to_time_t(time);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return local.tm_year * 366 + local.tm_yday;
}

} // namespace

std::vector<bool> ChooseKept(const std::vector<KeptTime> &kept, system_clock::time_point now) {
    std::vector<bool> stays(kept.size(), false);
    std::set<std::uint64_t> last;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const bool isFirstOfDay =
            i + 1 == kept.size() || DayOf(kept[i + 1].replaced) != DayOf(kept[i].replaced);
        const bool isOfMonth = now - kept[i].replaced <= kMonth;
        const bool isOfLast = last.size() < kMostLast && last.insert(kept[i].contents).second;
        stays[i] = isOfLast || (isFirstOfDay && isOfMonth);
    }
    return stays;
}

OSErr ListHistory(const std::string &settings, std::vector<EarlierSettings> *history) try {
    history->clear();
    std::string folder;
    std::vector<Kept> all;
    OSErr status = FolderFor(settings, kDontCreateFolder, &folder);
    if (status == noErr) {
        status = ListFolder(folder, &all);
    }
    for (const Kept &kept : all) {
        history->push_back({JoinPath(folder, kept.name), kept.time.replaced});
    }
    return UnlessMissing(status);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

QBaseOwner ReadEarlierSettings(const EarlierSettings &earlier) {
    QBaseOwner base = NewDrevixBase();
    DevicePrefsFile file;
    const bool isRead =
        base != nullptr &&
        ReadDevicePrefs(base.get(), earlier.path, {}, 0, RefusedFile::LeaveAlone, &file) == noErr &&
        file.status == noErr;
    return isRead ? std::move(base) : nullptr;
}

OSErr Forerunner::Prepare(const std::string &settings) try {
    OSErr status = ReadWholeFile(settings, &fBytes);
    if (status != noErr || fBytes.empty()) {
        return UnlessMissing(status);
    }
    std::vector<Kept> all;
    status = FolderFor(settings, kCreateFolder, &fFolder);
    if (status == noErr) {
        status = ListFolder(fFolder, &all);
    }
    if (status != noErr) {
        return status;
    }
    KeptTime time = {system_clock::now(), ContentsOf(fBytes)};
    if (!all.empty()) {
        const auto afterNewest = all[0].time.replaced + nanoseconds(1);
        const std::string newest = JoinPath(fFolder, all[0].name);
        if (AreOneFile(settings, newest)) { // left by a death just before the save
            CurrentDisk().Remove(newest.c_str());
            all.erase(all.begin());
        }
        time.replaced = std::max(time.replaced, afterNewest); // a clock may be put back
    }
    fTimes.push_back(time);
    std::ranges::transform(all, std::back_inserter(fTimes), &Kept::time);
    fSettings = settings;
    fPath = JoinPath(fFolder, NameOf(time));
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

void Forerunner::Finish() const try {
    if (fPath.empty()) {
        return;
    }
    std::string now;
    if (ReadWholeFile(fSettings, &now) == noErr && now == fBytes) {
        CurrentDisk().Remove(fPath.c_str());
        return;
    }
    if (!MakePrivate(fPath)) {
        return; // it could not be kept, so nothing goes for it
    }
    const std::vector<bool> stays = ChooseKept(fTimes, system_clock::now());
    for (std::size_t i = 0; i < fTimes.size(); ++i) {
        if (!stays[i]) {
            CurrentDisk().Remove(JoinPath(fFolder, NameOf(fTimes[i])).c_str());
        }
    }
} catch (const std::bad_alloc &) {
    return; // the next save does it
}

} // namespace drevix
