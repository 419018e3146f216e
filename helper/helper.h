// The device helper: answers the panel's requests, and makes the devices' controls do what the settings say,
// or only reports what they would do.
#pragma once

#include "helper/acting_helper.h"
#include "helper/options.h"
#include "helper/program_watch.h"
#include "helperlink/driver_messages.h"
#include "platform/base/loop_watch.h"
#include "platform/bus/sd_event_loop.h"
#include "platform/files/file_watch.h"
#include "platform/files/files.h"

#include <optional>
#include <string>

namespace drevix {

class Helper {
  public:
    Helper(const HelperOptions &options, const FSRef &resources, const std::string &program);
    Helper(const Helper &) = delete;
    Helper &operator=(const Helper &) = delete;
    ~Helper();

    // Serves until `endDescriptor` can be read or the session bus has been gone for five seconds. The
    // program's exit status: 0; 1, with a line on standard error, when another helper serves this session, when
    // there is no session bus, or for devices that are not valid.
    // Ends with 0 too when its own program was replaced or removed.
    [[nodiscard]] int Run(int endDescriptor);
    // Whether to start the program again, because an upgrade has replaced it.
    [[nodiscard]] bool IsReplaced() const { return fProgramFile == ProgramFile::Replaced; }

  private:
    [[nodiscard]] bool FindFiles();
    [[nodiscard]] bool TakeFirstDevices();
    void ReadDevicesAgain();
    void Serve(int endDescriptor);
    [[nodiscard]] bool IsServing() const;
    void TakeRegistered(const ProcessSerialNumber *earlier);
    void Begin();
    void TellSettings() const;
    [[nodiscard]] DeviceList AllDevices() const;

    static OSErr AnswerDevices(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);
    static OSErr ReloadSettings(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);

    const HelperOptions &fOptions;
    const FSRef &fResources;
    SdEventLoop fLoop;
    std::string fPreferences; // the folder, empty when there is none
    std::string fPrefsPath;
    std::string fDevicesPath;
    DeviceList fDevices{}; // of the file, or of the command line
    std::optional<FileWatch> fFile;
    LoopWatch fFileWatch;
    LoopWatch fEndWatch;
    ProgramWatch fProgram;
    LoopWatch fProgramWatch;
    ProgramFile fProgramFile = ProgramFile::Same;
    std::optional<ActingHelper>
        fActing; // nothing before another helper is ruled out, and for one that only describes
    bool fIsRegistered = false;
    bool fHasFailed = false;
    bool fIsToEnd = false;
};

} // namespace drevix
