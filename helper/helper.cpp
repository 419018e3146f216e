#include "helper/helper.h"

#include "helper/applied_settings.h"
#include "helper/devices_file.h"
#include "helperlink/device_text.h"
#include "keyboard/layout_family.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/catalog/named_files.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <poll.h>
#include <span>
#include <string_view>
#include <tuple>
#include <vector>

namespace drevix {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char *kDevicesFileName = "com.halcyra.drevix.devices";
constexpr milliseconds kTimeWithoutBus{5000}; // a bus that is started anew is there sooner

// Event handlers have no object of their own.
Helper *gHelper = nullptr;

// Prints it in one line, whatever a file or its name contains.
void Complain(std::string_view problem) {
    std::cerr << "DrevixHelper: " << PlainText(problem) << std::endl;
}

// The folder may be missing on a new account.
OSErr FindPreferences(std::string *path) {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    const OSErr status = FindFolder(kOnSystemDisk, kPreferencesFolderType, kCreateFolder, &volume, &folder);
    return status == noErr ? FindDevicePrefsPath(path) : status;
}

void TellDevices(const DeviceList &list) {
    std::cout << Translated("devices connected: %1", list.count) << "\n";
    for (int i = 0; i < list.count; ++i) {
        std::cout << "  "
                  << Translated("version %1, serial number %2", DeviceVersionText(list.device[i].productVers),
                                DeviceSerialText(list.device[i]))
                  << "\n";
    }
    std::cout << std::flush;
}

} // namespace

Helper::Helper(const HelperOptions &options, const FSRef &resources, const std::string &program)
    : fOptions(options), fResources(resources), fFileWatch([this] {
          if (fFile->TakeChange()) {
              ReadDevicesAgain();
          }
      }),
      fEndWatch([this] { fIsToEnd = true; }), fProgram(program),
      fProgramWatch([this] { fProgram.TakeChange(); }) {
    gHelper = this;
}

Helper::~Helper() {
    fActing.reset();
    std::ignore = AERemoveEventHandler(kDriverEventClass, kConnectedDevicesEvent); // it may not be installed
    std::ignore = AERemoveEventHandler(kDriverEventClass, kReloadPrefsEvent);
    LeaveSessionBus();
    gHelper = nullptr;
}

int Helper::Run(int endDescriptor) {
    if (!FindFiles() || !TakeFirstDevices()) {
        return 1;
    }
    if (AEInstallEventHandler(kDriverEventClass, kConnectedDevicesEvent, AnswerDevices, 0) != noErr ||
        AEInstallEventHandler(kDriverEventClass, kReloadPrefsEvent, ReloadSettings, 0) != noErr) {
        Complain(Translated("there is not enough memory"));
        return 1;
    }
    if (!fOptions.describe) {
        fActing.emplace(fOptions,
                        ActingHelper::Surroundings{fPrefsPath, fPreferences, fResources, Complain,
                                                   [this] { TellDevices(AllDevices()); }, OpenDesktop});
    }
    const std::string name = stringWithPascalString(kDrevixHelperName.data());
    if (RegisterProcess(name, [this](const auto *earlier) { TakeRegistered(earlier); }) != noErr) {
        Complain(Translated("there is no session bus; start it within a desktop session"));
        return 1;
    }
    Serve(endDescriptor);
    fActing.reset();
    if (fHasFailed) {
        return 1;
    }
    if (!fIsRegistered && !fIsToEnd) {
        Complain(Translated("the session bus does not answer; try again later"));
        return 1;
    }
    return 0;
}

bool Helper::FindFiles() {
    std::string preferences;
    const OSErr status = FindPreferences(&preferences);
    if (status != noErr && (fOptions.prefs.empty() || fOptions.devicesFile.empty())) {
        Complain(Translated("cannot use the preferences folder: %1; give --prefs and --devices",
                            Translated(StatusText(status))));
        return false;
    }
    fPreferences = status == noErr ? FolderOfPath(preferences) : std::string();
    fPrefsPath = fOptions.prefs.empty() ? preferences : fOptions.prefs;
    fDevicesPath = fOptions.devicesFile;
    if (fDevicesPath.empty()) {
        fDevicesPath = FolderOfPath(preferences).append("/").append(kDevicesFileName);
    }
    return true;
}

bool Helper::TakeFirstDevices() {
    std::string problem;
    for (const std::string &device : fOptions.devices) {
        if (!AddDevice(device, &fDevices, &problem)) {
            Complain(Translated("cannot use %1: %2", "--device " + device, problem));
            return false;
        }
    }
    if (fOptions.devices.empty()) {
        // Watched before it is read, so that no change is missed.
        fFile.emplace(fDevicesPath);
        fFileWatch.Watch(fFile->Descriptor(), POLLIN, std::nullopt);
        ReadDevicesAgain();
    } else {
        TellDevices(AllDevices());
    }
    return true;
}

void Helper::ReadDevicesAgain() {
    std::string problem;
    if (ReadDevices(fDevicesPath, &fDevices, &problem)) {
        TellDevices(AllDevices());
    } else {
        Complain(Translated("cannot use %1: %2; the devices stay as they were", fDevicesPath, problem));
    }
}

void Helper::Serve(int endDescriptor) {
    fEndWatch.Watch(endDescriptor, POLLIN, std::nullopt);
    fProgramWatch.Watch(fProgram.Descriptor(), POLLIN, std::nullopt);
    // Ends with the session too, because its bus does not come back.
    Clock::time_point deadline = Clock::now() + kTimeWithoutBus;
    while (!fHasFailed && !fIsToEnd && Clock::now() < deadline) {
        const bool isServing = IsServing();
        std::optional<std::chrono::microseconds> wait = fActing ? fActing->Turn() : std::nullopt;
        if (!isServing) {
            wait = std::min<std::chrono::microseconds>(wait.value_or(kTimeWithoutBus), kTimeWithoutBus / 5);
        }
        if (const auto untilLook = fProgram.Wait(); untilLook) {
            wait = std::min(wait.value_or(*untilLook), *untilLook);
        }
        fLoop.RunOnce(wait);
        fProgramFile = fProgram.Look();
        fIsToEnd = fIsToEnd || fProgramFile != ProgramFile::Same;
        if (isServing || IsServing()) { // registered meanwhile, and a slow desktop took longer than that
            deadline = Clock::now() + kTimeWithoutBus;
        }
    }
}

bool Helper::IsServing() const {
    return fIsRegistered && HasSessionBus();
}

void Helper::TakeRegistered(const ProcessSerialNumber *earlier) {
    if (earlier != nullptr) {
        Complain(Translated("another helper serves this session already, process %1", earlier->low));
        fHasFailed = true;
        return;
    }
    if (!fIsRegistered) {
        Begin();
    }
    fIsRegistered = true;
    if (!fHasFailed) {
        std::cout << "ready" << std::endl;
    }
}

void Helper::Begin() {
    if (fOptions.describe) {
        TellSettings();
        return;
    }
    fHasFailed = !fActing->Begin();
}

// Real devices first: a user who plugs one in wants to see it.
DeviceList Helper::AllDevices() const {
    DeviceList list{};
    const auto add = [&list](std::span<const ConnectedDevice> devices) {
        for (const ConnectedDevice &device : devices) {
            if (list.count < kMostDevices) {
                list.device[list.count++] = device;
            }
        }
    };
    add(fActing ? fActing->Devices() : std::vector<ConnectedDevice>());
    add(std::span(fDevices.device, fDevices.count));
    return list;
}

void Helper::TellSettings() const {
    std::string text;
    if (DescribeSettings(fPrefsPath, FactoryFolder(fResources), fOptions.front, &text)) {
        std::cout << text << std::flush;
    } else {
        Complain(Translated("cannot use %1: %2; the settings stay as they were", fPrefsPath, text));
    }
}

OSErr Helper::AnswerDevices(const AppleEvent * /*event*/, AppleEvent *reply, std::uint32_t /*refcon*/) {
    const DeviceList list = gHelper->AllDevices();
    return AECreateDesc(kDeviceListType, &list, sizeof list, &reply->directObject);
}

OSErr Helper::ReloadSettings(const AppleEvent * /*event*/, AppleEvent * /*reply*/, std::uint32_t /*refcon*/) {
    if (gHelper->fActing) {
        gHelper->fActing->LoadSettings();
    } else {
        gHelper->TellSettings();
    }
    return noErr;
}

} // namespace drevix
