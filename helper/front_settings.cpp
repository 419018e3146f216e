#include "helper/front_settings.h"

#include "document/settings_document.h"
#include "keyboard/key_codes.h"
#include "keyboard/layout_family.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/desktop/desktop_entries.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <utility>

namespace drevix {
namespace {

std::optional<RecordEntry> EntryOfRecord(const std::string &appFileName) {
    constexpr std::string_view kExtension = ".desktop";
    std::string id = appFileName;
    id.append(id.ends_with(kExtension) ? "" : kExtension);
    DesktopEntry entry;
    if (!FindDesktopEntry(id, "", &entry)) {
        return std::nullopt;
    }
    return RecordEntry{entry.startupClass, CommandOfEntry(entry)};
}

} // namespace

OSErr OpenSettings(SettingsDocument &document) {
    const OpenResult result = document.Open(Access::Read);
    const bool isMissing = result.fileStatus == fnfErr || result.fileStatus == dirNFErr;
    return result.fileStatus == noErr || isMissing ? result.status : result.fileStatus;
}

FrontSettings::FrontSettings(std::string path, FSRef resources)
    : fPath(std::move(path)), fResources(std::move(resources)), fFactory(FactoryFolder(fResources)) {}

FrontSettings::~FrontSettings() = default;

bool FrontSettings::Load(std::string *problem) {
    auto document = std::make_unique<SettingsDocument>(fFactory, kPanelVersion);
    document->UseFileAlone(fPath);
    if (const OSErr status = OpenSettings(*document); status != noErr) {
        *problem = Translated(StatusText(status));
        return false;
    }
    fRecords = FrontRecords(document->Base(), EntryOfRecord);
    // Until then, what applies points into the previous document.
    fInForce = RecordsInForce();
    fDocument = std::move(document);
    SetFront(FrontWindow(fFront));
    return true;
}

void FrontSettings::UseLayout(const KeyboardCharacters &layout) {
    FSRef factory = FactoryFolder(fResources, FamilyOfLayout(KeyCharacters(layout)));
    if (factory.path != fFactory.path) {
        fFactory = std::move(factory);
        std::string unused;
        std::ignore = Load(&unused); // which was told when it began to fail
    }
}

void FrontSettings::SetFront(const FrontWindow &front) {
    fFront = front;
    if (fDocument) {
        fNumber = fRecords.Find(fFront);
        fInForce = RecordsInForce(fDocument->Base(), fNumber);
    }
}

std::string FrontSettings::RecordName() const {
    const AppPrefs *record = fDocument && fNumber != 0 ? GetAppPrefs(fDocument->Base(), fNumber) : nullptr;
    return record != nullptr ? stringWithPascalString(record->appFileName.data()) : std::string();
}

} // namespace drevix
