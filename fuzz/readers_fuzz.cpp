// The small readers, the first byte of an input choosing one: whatever the rest holds, what is read of it lies within it, and
// what can be written again is read again as the same.
#include "cli/command_line.h"
#include "cli/file_check.h"
#include "fuzz/fuzzing.h"
#include "helper/stand_in.h"
#include "helperlink/device_text.h"
#include "keyboard/key_names.h"
#include "platform/catalog/apple_double.h"
#include "platform/catalog/catalog_names.h"
#include "platform/desktop/desktop_entries.h"
#include "platform/plist/property_list_reading.h"
#include "qbase/qbase_file_check.h"
#include "settings/device_prefs.h"
#include "settings/prefs_dictionary.h"
#include "settings/salvage.h"

#include <algorithm>
#include <cstring>

namespace drevix {
namespace {

using fuzz::Check;

bool LiesIn(std::string_view text, std::string_view part) {
    return part.empty() ||
           (part.data() >= text.data() && part.data() + part.size() <= text.data() + text.size());
}

void ReadEntry(std::string_view text) {
    DesktopEntry entry{};
    std::size_t end = 0;
    FindEntryLine(text, &end, [&](const EntryLine &line) {
        Check(LiesIn(text, line.key) && LiesIn(text, line.value) && line.start <= line.end &&
              line.end <= text.size());
        entry.exec = line.key == "Exec" ? line.value : entry.exec;
        entry.isInTerminal = line.key == "Terminal";
        return false;
    });
    Check(end <= text.size());
    const std::vector<std::string> words = CommandOfEntry(entry);
    Check(words.empty() || !words.front().empty());
}

void CheckBaseFile(std::string_view bytes) {
    const QBaseFileFindings findings = CheckQBaseFile(bytes, kDrevixBaseType, kDrevixBaseTypeVersion);
    Check(!findings.isSound || findings.records.size() == static_cast<std::size_t>(findings.announced));
    Check(std::ranges::all_of(findings.records,
                              [&](std::string_view record) { return LiesIn(bytes, record); }));
    for (const OSErr status : {OSErr{noErr}, kDamagedList}) {
        for (const FileProblem &problem : CheckFileBytes(bytes, status).problems) {
            Check(!EnglishText(problem.text).empty());
        }
    }
    for (const std::string_view record : FindWholeRecords(bytes)) {
        Check(LiesIn(bytes, record) && record.size() == sizeof(AppPrefs));
    }
    const QBaseOwner base = NewDrevixBase();
    Check(AddWholeRecords(base.get(), bytes) == noErr);
    ValidateDevicePrefs(base.get());
}

// A record made from any dictionary is, written and read again, the same but for "factory", which is not written.
void ReadRecords(std::string_view bytes) {
    ListBytes list(std::as_bytes(std::span(bytes)));
    PropertyListProblem problem;
    const auto check = [](const PropertyList &element) {
        AppPrefs record{};
        AppPrefs again{};
        const auto *dictionary = element.As<PropertyListDictionary>();
        if (dictionary != nullptr && GetAppPrefsFromDictionary(&record, *dictionary)) {
            record.factory = 0;
            Check(GetAppPrefsFromDictionary(&again, GetAppPrefsDictionary(record)));
            Check(std::memcmp(&record, &again, sizeof record) == 0);
        }
        return true;
    };
    Check(ReadXmlList(list, HandOver::Elements, check, &problem) == noErr || !problem.text.empty());
}

void TellDevices(std::string_view bytes) {
    static const auto kList = [] {
        static DeviceList list;
        InstallAppleEventHandlers(&list);
        return &list;
    }();
    AppleEvent event;
    Check(AECreateDesc(kDeviceListType, bytes.data(), bytes.size(), &event.directObject) == noErr);
    Check(ReceiveConnectedDevicesReply(&event, nullptr, 0) == noErr);
    Check(std::memcmp(kList, bytes.data(), std::min(bytes.size(), sizeof *kList)) == 0);
    for (const ConnectedDevice &device : kList->device) {
        Check(DeviceNameText(device.vendorName).size() <= sizeof device.vendorName);
        Check(!DeviceVersionText(device.productVers).empty() && !DeviceSerialText(device).empty());
    }
}

void ParseKeys(std::string_view text) {
    static const bool kIsBuilt = [] {
        for (std::size_t i = 0; i < gAsciiTable.size() - 1; ++i) {
            gAsciiTable[i] = static_cast<std::uint8_t>(i < 64 ? ' ' + i : i * 2);
        }
        return true;
    }();
    std::uint8_t key = 0;
    std::uint16_t modifiers = 0;
    if (kIsBuilt && ParseKeyCombination(text, &key, &modifiers)) {
        Check(!KeystrokeText(key, modifiers).empty() && !LabelledKeystrokeText(key, modifiers).empty());
    }
}

void ParseArguments(std::string_view text) {
    std::vector<std::string> arguments;
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), text.find('\n') + 1))) {
        arguments.emplace_back(text.substr(0, text.find('\n')));
        if (text.find('\n') == text.npos) {
            break;
        }
    }
    CommandLine line;
    if (ParseCommandLine(arguments, &line).IsDone()) {
        Check(line.words.size() <= arguments.size() && (!line.prefs || !line.prefs->empty()));
    }
}

void DescribeStandIn(std::string_view text) {
    StandIn standIn;
    std::string problem;
    Check(ParseStandIn(text, &standIn, &problem) ? !standIn.path.empty() : !problem.empty());
}

void ReadCompanion(std::string_view bytes) {
    AppleDouble file;
    if (ParseAppleDouble(std::as_bytes(std::span(bytes)), &file) == noErr) {
        AppleDouble again;
        const std::string written = AppleDoubleBytes(file);
        Check(ParseAppleDouble(std::as_bytes(std::span(written)), &again) == noErr);
        Check(again.finderInfo == file.finderInfo && again.resourceFork == file.resourceFork);
        SetFInfo(again, GetFInfo(file));
        Check(again.finderInfo == file.finderInfo);
    }
}

void ReadMountTable(std::string_view text) {
    const std::vector<Volume> volumes = ParseMountTable(std::string(text));
    for (const Volume &volume : volumes) {
        Check(volume.root.starts_with('/') && volume.root.size() <= text.size());
        Check(std::ranges::count(volumes, volume.root, &Volume::root) == 1);
        Check(NameOfVolume(volume)[0] <= 27 && VolumeOfPath(volumes, volume.root) == &volume);
    }
}

constexpr auto kReaders = std::to_array<void (*)(std::string_view)>(
    {ReadEntry, CheckBaseFile, ReadRecords, TellDevices, ParseKeys, ParseArguments, DescribeStandIn,
     ReadCompanion, ReadMountTable});

} // namespace
} // namespace drevix

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size > 0) {
        drevix::kReaders.at(data[0] %
                            drevix::kReaders.size())({reinterpret_cast<const char *>(data) + 1, size - 1});
    }
    return 0;
}
