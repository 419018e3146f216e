// What a save costs more for keeping what it replaces. Run with --benchmark_enable_random_interleaving=true and
// --benchmark_repetitions=15, as a disk's flushes vary.
#include "document/history.h"
#include "platform/base/status.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

// A folder on the disk of the build, not in memory.
class Folder {
  public:
    Folder() {
        std::string pattern = std::filesystem::current_path() / "history-bench-XXXXXX";
        fPath = ::mkdtemp(pattern.data());
        ::setenv("XDG_STATE_HOME", (fPath + "/state").c_str(), 1);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    ~Folder() { std::filesystem::remove_all(fPath); }
    [[nodiscard]] std::string File() const { return fPath + "/settings"; }

  private:
    std::string fPath;
};

void Check(bool isFine) {
    if (!isFine) {
        std::abort();
    }
}

enum class History { None, Kept };

void Save(benchmark::State &state, History history) {
    const Folder folder;
    const drevix::QBaseOwner base = drevix::NewDrevixBase();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        drevix::AppPrefs record = drevix::gDefaultGlobalPrefs;
        record.application = static_cast<drevix::OSType>(i);
        Check(drevix::StoreAppPrefs(base.get(), record, drevix::kNoRecord) != drevix::kNoRecord);
    }
    std::uint32_t saves = 0;
    for (auto _ : state) {
        drevix::GetAppPrefs(base.get(), 0)->device[0].action[0].crc = ++saves; // what differs is kept
        drevix::QBaseSetRecordsChanged(base.get(), true);
        drevix::Forerunner forerunner;
        Check(history == History::None || forerunner.Prepare(folder.File()) == drevix::noErr);
        Check(drevix::SaveDevicePrefsToPath(base.get(), folder.File(), forerunner.Path()) == drevix::noErr);
        forerunner.Finish();
    }
}

} // namespace

BENCHMARK_CAPTURE(Save, without_history, History::None)->Arg(30)->Arg(300)->UseRealTime();
BENCHMARK_CAPTURE(Save, with_history, History::Kept)->Arg(30)->Arg(300)->UseRealTime();
