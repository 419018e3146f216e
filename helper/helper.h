// The least device helper: it answers the panel's requests as one does that has devices, and says what it would
// have them do.
#pragma once

#include "helper/options.h"
#include "helperlink/driver_messages.h"
#include "platform/files/file_watch.h"
#include "platform/files/files.h"

#include <optional>
#include <string>

namespace drevix {

class Helper {
  public:
    Helper(const HelperOptions &options, const FSRef &resources);
    Helper(const Helper &) = delete;
    Helper &operator=(const Helper &) = delete;
    ~Helper();

    // Serves until `endDescriptor` can be read or the session bus has been gone for five seconds. The
    // program's exit status: 0; 1, with a line on standard error, when another helper serves this session, when
    // there is no session bus, or for devices that make no sense.
    [[nodiscard]] int Run(int endDescriptor);

  private:
    [[nodiscard]] bool FindFiles();
    [[nodiscard]] bool TakeFirstDevices();
    void ReadDevicesAgain();
    void Serve(int endDescriptor);
    void TakeRegistered(const ProcessSerialNumber *earlier);
    void TellSettings() const;

    static OSErr AnswerDevices(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);
    static OSErr ReloadSettings(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);

    const HelperOptions &fOptions;
    const FSRef &fResources;
    std::string fPrefsPath;
    std::string fDevicesPath;
    DeviceList fDevices{};
    std::optional<FileWatch> fWatch;
    bool fIsRegistered = false;
    bool fIsSecond = false;
};

} // namespace drevix
