// Thousands of what people have a few of: items to clean up, hotkeys to read and write. Time must grow with the number alone.
#include "companion/korvane_files.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "util/items/items_folder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using namespace drevix;

// The user's folders, in memory where /tmp is.
class Home {
  public:
    Home() {
        std::string pattern = std::filesystem::temp_directory_path() / "many-bench-XXXXXX";
        fPath = ::mkdtemp(pattern.data());
        std::filesystem::create_directory(fPath + "/config");
        ::setenv("HOME", fPath.c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (fPath + "/config").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (fPath + "/state").c_str(), 1);
    }
    Home(const Home &) = delete;
    Home &operator=(const Home &) = delete;
    ~Home() { std::filesystem::remove_all(fPath); }
    [[nodiscard]] std::string Path(const std::string &name) const { return fPath + "/" + name; }

  private:
    std::string fPath;
};

void Check(bool isFine) {
    if (!isFine) {
        std::abort();
    }
}

// Makes so many items, of which the records open every second; then clears the others.
void CleanUpItems(benchmark::State &state) {
    const auto count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        const Home home;
        const QBaseOwner base = NewDrevixBase();
        AppPrefs record = gDefaultGlobalPrefs;
        for (int i = 0; i < count; ++i) {
            const std::string target = home.Path("target " + std::to_string(i));
            std::filesystem::create_directory(target);
            ActionSlot &slot = record.device[0].action[0];
            Check(MakeDrevixItem(target, &slot.data) == noErr);
            slot.command = kActionOpenItem;
            Check(i % 2 == 0 || QBaseAddRecord(base.get(), &record, sizeof record) != kNoRecord);
        }
        state.ResumeTiming();
        Check(CleanupDrevixItems(kDrevixItemsFolderName.data(), base.get()) == noErr);
        state.PauseTiming();
        Check(std::filesystem::directory_iterator(home.Path("config/com.halcyra.drevix.stuff")) !=
              std::filesystem::directory_iterator());
        state.ResumeTiming();
    }
}

void WriteAndReadHotKeys(benchmark::State &state) {
    const Home home;
    KorvaneHotKeyList list;
    list.TargetApp = "Photoshop";
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        list.HotKeys.emplace_back().Set(KorvaneKey::Menu, "Some longer menu command " + std::to_string(i));
    }
    for (auto _ : state) {
        Check(SaveKorvanePrefs(list, home.Path("~hotkeys")));
        const auto read = LoadKorvaneFile(home.Path("~hotkeys"));
        Check(read && read->HotKeys.size() == list.HotKeys.size());
    }
}

} // namespace

BENCHMARK(CleanUpItems)->Arg(250)->Arg(1000)->Iterations(1);
BENCHMARK(WriteAndReadHotKeys)->Arg(1000)->Arg(10'000);
