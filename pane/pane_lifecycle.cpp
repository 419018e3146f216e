// The panel's life, and the flow of settings between file, base and working copy.
#include "pane/drevix_pane.h"

#include "companion/korvane_sync.h"
#include "keyboard/keystroke_capture.h"
#include "keyboard/layout_of_windows.h"
#include "pane/editor_tables.h"
#include "pane/pane_text.h"
#include "platform/resources.h"
#include "platform/status.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"
#include "util/items_folder.h"

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstring>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

Q_LOGGING_CATEGORY(gPaneLog, "drevix.pane")

// Whether there was a settings file, and nothing came of it.
bool IsUnusable(OSErr fileStatus) {
    return fileStatus != noErr && fileStatus != fnfErr && fileStatus != dirNFErr;
}

// As GetDevicePrefs for the panel's settings file, but tells what came of the file itself.
OSErr GetPrefsAndFileStatus(QBaseHandle base, const PaneBundle &bundle, OSErr *fileStatus) {
    std::string path;
    if (const OSErr found = FindDevicePrefsPath(&path); found != noErr) {
        *fileStatus = found;
        auto name = kDrevixPrefsName;
        return GetDevicePrefs(base, name.data(), bundle.resources, bundle.version);
    }
    return GetDevicePrefsFromPath(base, path, bundle.resources, bundle.version, fileStatus);
}

} // namespace

PaneBundle FindPaneBundle() {
    PaneBundle bundle = {{}, kPanelVersion};
    std::ignore = FindResourceFolder(&bundle.resources); // stays empty; loading then tells what is missing
    return bundle;
}

DrevixPane::DrevixPane(PaneBundle bundle) : fPrefPaneBundle(std::move(bundle)) {}

DrevixPane::~DrevixPane() {
    if (fIsSelected) {
        RemoveAppleEventHandlers();
        SwapNSAppMethods(); // a filter of a plug-in that is gone must not stay behind
    }
    if (gDrevixPane == this) {
        gDrevixPane = nullptr;
    }
    if (fMainView != nullptr && fMainView->parent() == nullptr) {
        delete fMainView;
    }
}

QWidget *DrevixPane::mainView() {
    if (fMainView == nullptr) {
        fMainView = new QWidget;
        setupUi(fMainView);
        BuildMenus();
        BuildKeystrokeControls();
        BuildDeviceControls();
        BuildItemControls();
        BuildLooks();
        ConnectControls();
    }
    return fMainView;
}

void DrevixPane::setProblemHandler(ProblemHandler handler) {
    fProblemHandler = std::move(handler);
}

// Tells of a failure, or that all is well again.
void DrevixPane::Report(OSErr status, const QString &doing) {
    Tell(status == noErr ? QString() : tr("%1: %2.").arg(doing, StatusSentence(status)));
}

void DrevixPane::Tell(const QString &problem) {
    if (!problem.isEmpty()) {
        qCWarning(gPaneLog).noquote() << problem;
    }
    if (fProblemHandler) {
        fProblemHandler(problem);
    }
}

void DrevixPane::mainViewDidLoad() {
    gDrevixPane = this;
    mainView();
    GetKeyboardInformationOfWindows(this, [this] { GetUIFromPrefs(); });
    if (!fIsDrawnOnly) {
        StartHelper();
        std::ignore = RegisterHelpBooks(); // told of when a page is asked for
    }
    uiPaneTabs->setCurrentIndex(0);
    fDrevixPrefsIndex = 0;
    fDrevixActionIndex = kNoSlot;
    if (GetBaseFromFile() == noErr) {
        UpdateTargetMenu();
        GetPrefsFromBase();
        GetUIFromPrefs();
    }
    CheckDevices();
}

void DrevixPane::setDrawnOnly() {
    fIsDrawnOnly = true;
}

void DrevixPane::didSelect() {
    if (!fIsSelected) {
        fIsSelected = true;
        SwapNSAppMethods();
        InstallAppleEventHandlers(&fDeviceList);
        fDeviceCheckTimer.start();
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
                &DrevixPane::applicationStateChanged);
    }
}

void DrevixPane::willUnselect() {
    if (fIsSelected) {
        fIsSelected = false;
        fDeviceCheckTimer.stop();
        RemoveAppleEventHandlers();
        SwapNSAppMethods();
        disconnect(qGuiApp, nullptr, this, nullptr);
        if (SaveEverything()) {
            // Not otherwise: the file may name items that the base names no more.
            std::ignore = CleanupDrevixItems(kDrevixItemsFolderName.data(), fDrevixBase.get());
        }
        UpdateRevertApplyButtons();
    }
}

void DrevixPane::applicationStateChanged(Qt::ApplicationState state) {
    if (state == Qt::ApplicationActive) {
        appDidBecomeActive();
    } else {
        appDidResignActive();
    }
}

void DrevixPane::appDidBecomeActive() {
    std::ignore = TakeOutsideChanges();
    SyncFromKorvane(fDrevixBase.get()); // the companion may have changed its hotkeys meanwhile
    GetPrefsFromBase();
    GetUIFromPrefs();
}

void DrevixPane::appDidResignActive() {
    actPaneButtonApply(); // going to the background applies the edits exactly as the button does
}

void DrevixPane::actPaneButtonApply() {
    std::ignore = SaveEverything(); // reported there; the base keeps the edits for the next save
    UpdateRevertApplyButtons();
}

// Whether the file holds the base. The helper may not run, so the status of telling it does not count.
bool DrevixPane::SaveEverything() {
    if (!TakeOutsideChanges()) {
        SavePrefsToBase();
        std::ignore = SaveBaseToFile();
    }
    return !QBaseGetRecordsChanged(fDrevixBase.get()) && !QBaseGetReadOnly(fDrevixBase.get());
}

FileStamp DrevixPane::StampOfPrefsFile() {
    if (std::string path; FindDevicePrefsPath(&path) == noErr) {
        fPrefsPath = QFile::decodeName(QByteArray::fromStdString(path));
    } // else a disk that fails has not moved the file
    const QFileInfo file(fPrefsPath);
    return file.exists() ? FileStamp{file.lastModified(), file.size()} : FileStamp{};
}

// Whether another program, such as drevixctl, has written the file since it was last read or written here.
bool DrevixPane::IsFileChangedOutside() {
    const FileStamp present = StampOfPrefsFile();
    return present.size >= 0 && present != fFileStamp;
}

// If another program has changed the file while nothing was changed here, its settings are shown instead of
// being written over.
bool DrevixPane::TakeOutsideChanges() {
    if (!IsFileChangedOutside() || IsEdited() || !fUnsaved.empty() ||
        QBaseGetRecordsChanged(fDrevixBase.get())) {
        return false;
    }
    actPaneButtonRevert();
    return true;
}

// The records may be others than the list shows, so it is built again, and the edited record is found by its
// name.
void DrevixPane::actPaneButtonRevert() {
    const AppPrefs edited = fDrevixPrefs;
    if (GetBaseFromFile() != noErr) {
        return; // reported there; everything is as it was
    }
    const RecordNumber found = FindReplacedAppPrefs(fDrevixBase.get(), edited);
    fDrevixPrefsIndex = found == kNoRecord ? 0 : found;
    UpdateTargetMenu();
    GetPrefsFromBase();
    GetUIFromPrefs();
}

// Loads into a base of its own, so that the present one stays as it is when that fails.
OSErr DrevixPane::GetBaseFromFile() {
    const FileStamp stamp = StampOfPrefsFile(); // before reading: a change meanwhile is seen later
    QBaseOwner base = NewDrevixBase();
    OSErr fileStatus = noErr;
    const OSErr status =
        base == nullptr ? memFullErr : GetPrefsAndFileStatus(base.get(), fPrefPaneBundle, &fileStatus);
    if (status != noErr) {
        if (fDrevixBase == nullptr) {
            fDrevixBase = std::move(base); // without records, but an import can bring some
        } else if (base != nullptr) {
            QBaseSetReadOnly(fDrevixBase.get(), QBaseGetReadOnly(base.get())); // what a save would destroy
        }
        Report(status, tr("The settings could not be loaded"));
        return status;
    }
    SyncFromKorvane(base.get());
    SortDrevixBase(base.get());
    const bool isFirst = fDrevixBase == nullptr;
    fDrevixBase = std::move(base);
    fUnsaved.clear();
    fFileStamp = stamp;
    if (!IsUnusable(fileStatus)) {
        if (!isFirst) { // what was told of the helper just before must stay to be read
            Tell({});
        }
    } else if (QBaseGetReadOnly(fDrevixBase.get())) {
        Report(fileStatus,
               tr("The settings file could not be read and is left alone; changes cannot be saved"));
    } else {
        Report(fileStatus,
               tr("The settings file could not be used; it is kept as %1, and the factory's settings "
                  "are shown")
                   .arg(TextOf(kDrevixPrefsName) + QLatin1String(kRefusedSuffix)));
    }
    return noErr;
}

// What was changed here counts more than another program's change, but its user is told.
OSErr DrevixPane::SaveBaseToFile() {
    const bool isReplacing = IsFileChangedOutside();
    auto name = kDrevixPrefsName;
    const OSErr status =
        SaveDevicePrefs(fDrevixBase.get(), name.data(), kDrevixPrefsType, kDrevixPrefsCreator);
    if (status == noErr && !fUnsaved.empty()) {
        fUnsaved.clear();
        for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase.get()); ++i) {
            ShowTargetTitle(i);
        }
    }
    if (status != noErr && QBaseGetReadOnly(fDrevixBase.get())) {
        Tell(tr("The settings were not saved, since the settings file could not be read."));
    } else if (status == noErr && isReplacing) {
        Tell(tr("Another program had changed the settings meanwhile; these here took their place."));
    } else {
        Report(status, tr("The settings could not be saved"));
    }
    if (status == noErr || !isReplacing) { // a save whose last step alone failed has written the file too
        fFileStamp = StampOfPrefsFile();
    }
    if (status != noErr) {
        return status;
    }
    return static_cast<OSErr>(RequestDriverPrefsUpdate(kDrevixHelperName.data()));
}

void DrevixPane::GetPrefsFromBase() {
    fDrevixPrefsIndex = RecordOfTargetItem(uiSettingsMenuTarget->currentIndex());
    if (const AppPrefs *stored = StoredPrefs(); stored != nullptr) {
        fDrevixPrefs = *stored;
    }
    LoadDefaultPrefs(); // the marks of changed values are held against them
    UpdateToolMenu();
}

void DrevixPane::SavePrefsToBase() {
    KeepEdits();
    std::ignore = SyncToKorvane(fDrevixBase.get()); // the companion may not be there
}

void DrevixPane::KeepEdits() {
    if (!IsEdited()) {
        return;
    }
    if (QBaseReplaceRecord(fDrevixBase.get(), fDrevixPrefsIndex, &fDrevixPrefs, sizeof fDrevixPrefs) ==
        kNoRecord) {
        Report(memFullErr, tr("The changes could not be kept"));
        return;
    }
    fUnsaved.insert(FoldedName(fDrevixPrefs));
    ShowTargetTitle(fDrevixPrefsIndex);
}

void DrevixPane::LoadDefaultPrefs() {
    // An unreadable file leaves the defaults as they were.
    std::ignore = drevix::LoadDefaultPrefs(fPrefPaneBundle.resources, fDrevixPrefs, &fDefaultAppPrefs);
}

// The record that the working copy was made of; null when there is none.
const AppPrefs *DrevixPane::StoredPrefs() const {
    return GetAppPrefs(fDrevixBase.get(), fDrevixPrefsIndex);
}

bool DrevixPane::IsEdited() const {
    const AppPrefs *stored = StoredPrefs();
    return stored != nullptr && std::memcmp(stored, &fDrevixPrefs, sizeof fDrevixPrefs) != 0;
}

void DrevixPane::UpdateRevertApplyButtons() {
    if (StoredPrefs() == nullptr) {
        return;
    }
    const bool isEdited = IsEdited();
    if (!isEdited && (uiPaneButtonApply->hasFocus() || uiPaneButtonRevert->hasFocus())) {
        // A button that dims would give the focus to whatever comes next.
        ControlLists()[static_cast<std::size_t>(uiPaneTabs->currentIndex())]->setFocus(Qt::OtherFocusReason);
    }
    uiPaneButtonApply->setEnabled(isEdited);
    uiPaneButtonRevert->setEnabled(isEdited);
    const std::size_t unsaved =
        fUnsaved.size() + (isEdited && !fUnsaved.contains(FoldedName(fDrevixPrefs)) ? 1 : 0);
    uiPaneTextDifferences->setText(unsaved == 0   ? QString()
                                   : unsaved == 1 ? tr("Unsaved changes")
                                                  : tr("Unsaved changes for %1 applications").arg(unsaved));
}

} // namespace drevix
