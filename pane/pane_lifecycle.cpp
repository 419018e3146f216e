// The panel's life, and the flow of settings between file, base and working copy.
#include "pane/drevix_pane.h"

#include "companion/korvane_sync.h"
#include "helperlink/driver_messages.h"
#include "keyboard/key_names.h"
#include "keyboard/qt/keystroke_capture.h"
#include "keyboard/qt/layout_of_windows.h"
#include "keyboard/qt/layout_watch.h"
#include "pane/area_roles.h"
#include "pane/editor_tables.h"
#include "pane/live_view.h"
#include "pane/pane_text.h"
#include "pane/qt_event_loop.h"
#include "platform/base/status.h"
#include "platform/desktop/resources.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstring>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

Q_LOGGING_CATEGORY(gPaneLog, "drevix.pane")

// Whether there was a settings file that could not be used.
bool IsUnusable(OSErr fileStatus) {
    return fileStatus != noErr && fileStatus != fnfErr && fileStatus != dirNFErr;
}

} // namespace

PaneBundle FindPaneBundle() {
    PaneBundle bundle = {{}, kPanelVersion};
    std::ignore = FindResourceFolder(&bundle.resources); // stays empty; loading then tells what is missing
    return bundle;
}

DrevixPane::DrevixPane(PaneBundle bundle)
    : fPrefPaneBundle(std::move(bundle)), fDocument(fPrefPaneBundle.resources, fPrefPaneBundle.version) {
    UseQtEventLoop(); // before the helper or the companion is asked anything
}

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
        LookForLayoutOfWindowsAhead();
        fMainView = new QWidget;
        InstallAreaRoles();
        setupUi(fMainView);
        BuildPages(); // from here on fonts are needed, which are still being looked for
        BuildFields();
        BuildMenus();
        BuildStrip();
        BuildKeystrokeControls();
        BuildDeviceControls();
        BuildLiveView();
        BuildItemControls();
        BuildControlMenu();
        BuildShortcuts();
        BuildSaveControls();
        BuildUndoControls();
        BuildLooks();
        ConnectControls();
        BuildSideBar();
    }
    return fMainView;
}

void DrevixPane::setProblemHandler(ProblemHandler handler) {
    fProblemHandler = std::move(handler);
}

// Reports a failure, or that all is well again.
void DrevixPane::Report(OSErr status, const QString &doing) {
    Tell(status == noErr ? QString() : tr("%1: %2.").arg(doing, StatusSentence(status)));
}

void DrevixPane::Tell(const QString &problem) {
    TellOfSaving(problem);
    ShowProblem(problem);
}

// Shows the result of a save in the save bar.
void DrevixPane::TellOfSaving(const QString &problem) {
    fIsConflictShown = false;
    fTold = problem;
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
    GetKeyboardInformationOfWindows(this, [this] { LayoutRebuilt(); });
    UseLayout();
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
    ShowIntroduction();
}

void DrevixPane::setDrawnOnly() {
    fIsDrawnOnly = true;
    fIcons.LookUpAtOnce();
}

void DrevixPane::didSelect() {
    if (!fIsSelected) {
        fIsSelected = true;
        fIsHostActive = QGuiApplication::applicationState() == Qt::ApplicationActive;
        SwapNSAppMethods();
        InstallAppleEventHandlers(&fDeviceList);
        fDeviceCheckTimer.start();
        fLiveView->Begin(fIsHostActive);
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
                &DrevixPane::applicationStateChanged);
    }
}

void DrevixPane::willUnselect() {
    if (fIsSelected) {
        fIsSelected = false;
        fDeviceCheckTimer.stop();
        fLiveView->End();
        RemoveAppleEventHandlers();
        SwapNSAppMethods();
        disconnect(qGuiApp, nullptr, this, nullptr);
        SaveForLeaving();
    }
}

void DrevixPane::applicationStateChanged(Qt::ApplicationState state) {
    fIsHostActive = state == Qt::ApplicationActive;
    fLiveView->SetInFront(fIsHostActive);
    if (fIsHostActive) {
        appDidBecomeActive();
    } else {
        appDidResignActive();
    }
}

void DrevixPane::appDidBecomeActive() {
    QTimer::singleShot(0, fLayoutWatch,
                       &LayoutWatch::Check); // a table that waits for the focus is built first
    if (fRestTimer.isActive()) {
        std::ignore = SaveEverything({}); // an edit that came while the host was inactive; reported there
    } else {
        TakeOutsideChanges();
    }
    if (fSaveStatus != fBsyErr) {
        // The companion may have changed its hotkeys meanwhile. If a save had to wait, it does not have the
        // panel's own changes yet.
        fDocument.TakeCompanionChanges();
    }
    GetPrefsFromBase();
    GetUIFromPrefs();
    DropStaleSteps();
}

void DrevixPane::appDidResignActive() {
    fIsConflictShown = fIsConflictShown && !IsEdited();
    std::ignore = SaveEverything(kLongestWait); // as the button does; reported there
}

// Stores the working copy first: incoming records must not replace an edit.
void DrevixPane::TakeOutsideChanges() {
    KeepEdits();
    const RecordTrace edited = TraceEdited();
    const OutsideChanges outside = fDocument.TakeOutsideChanges();
    fDrevixBase = fDocument.Base();
    if (outside.cameIn) {
        ShowTraced(edited);
        DropStaleSteps();
    }
    TellConflicts(outside.conflicts);
}

// The records may differ from the list, so rebuilds it and finds the edited record again.
void DrevixPane::actPaneButtonRevert() {
    const RecordTrace edited = TraceEdited();
    const std::vector<UnsavedRecord> unsaved = UnsavedHere();
    if (GetBaseFromFile() == noErr) { // else everything is as it was, and it was reported
        fConflicts.clear();           // what is in the file is shown now
        ShowConflict();
        NoteReverted(unsaved);
        ShowTraced(edited);
        DropStaleSteps();
    }
}

OSErr DrevixPane::GetBaseFromFile() {
    const bool isFirst = fDrevixBase == nullptr;
    const OpenResult opened = fDocument.Open(fIsDrawnOnly ? Access::Read : Access::Change);
    fDrevixBase = fDocument.Base(); // without records when that failed at first, but an import can bring some
    if (opened.status != noErr) {
        Report(opened.status, tr("Couldn't load your settings"));
        return opened.status;
    }
    fIsFirstRun = isFirst && opened.fileStatus == fnfErr;
    fSaveStatus = noErr;
    fRetryTimer.stop();
    if (!IsUnusable(opened.fileStatus)) {
        if (!isFirst) { // what was told of the helper just before must stay to be read
            Tell({});
        }
    } else if (fDocument.IsReadOnly()) {
        Tell(tr("Couldn't read the settings file, so changes can't be saved. It was left as it is."));
    } else {
        Tell(tr("The settings file was damaged. It was kept as %1; these are the factory settings.")
                 .arg(TextOf(kDrevixPrefsName) + QLatin1String(kRefusedSuffix)));
    }
    return noErr;
}

void DrevixPane::GetPrefsFromBase() {
    fDrevixPrefsIndex = RecordOfTargetItem(uiSettingsMenuTarget->currentIndex());
    CopyStoredPrefs();
    LoadDefaultPrefs(); // the marks of changed values are held against them
    UpdateToolMenu();
}

void DrevixPane::SavePrefsToBase() {
    KeepEdits();
    fDocument.WriteCompanionFiles();
    TellCompanionProblems(fDocument.Companion());
}

void DrevixPane::KeepEdits() {
    if (!IsEdited()) {
        return;
    }
    if (!fDocument.Replace(fDrevixPrefsIndex, fDrevixPrefs)) {
        Report(memFullErr, tr("Couldn't keep the changes"));
        return;
    }
    ShowTargetTitle(fDrevixPrefsIndex);
    UpdateRevertApplyButtons();
}

void DrevixPane::LoadDefaultPrefs() {
    // An unreadable file leaves the defaults as they were.
    std::ignore = drevix::LoadDefaultPrefs(fFactory, fDrevixPrefs, &fDefaultAppPrefs);
    fOtherFamilies = OtherFamilies(fPrefPaneBundle.resources, fDrevixPrefs);
}

// The record that the working copy was made from; null if there is none.
const AppPrefs *DrevixPane::StoredPrefs() const {
    return GetAppPrefs(fDrevixBase, fDrevixPrefsIndex);
}

bool DrevixPane::IsEdited() const {
    const AppPrefs *stored = StoredPrefs();
    return stored != nullptr && std::memcmp(stored, &fDrevixPrefs, sizeof fDrevixPrefs) != 0;
}

// The number of records that differ from the settings file.
int DrevixPane::CountUnsaved() const {
    return fDocument.CountUnsaved() + (IsEdited() && !fDocument.IsUnsaved(fDrevixPrefs) ? 1 : 0);
}

void DrevixPane::UpdateRevertApplyButtons() {
    if (StoredPrefs() == nullptr) {
        return;
    }
    const int unsaved = CountUnsaved();
    const SaveState state = SaveStateOf({IsEdited(), unsaved > 0, fSaveStatus != noErr});
    const bool canApply = CanApply(state);
    ShowSaveButton(state);
    if (!canApply && (uiPaneButtonApply->hasFocus() || uiPaneButtonRevert->hasFocus())) {
        // A button that is disabled would pass the focus to whatever comes next.
        ControlMenus()[static_cast<std::size_t>(uiPaneTabs->currentIndex())]->setFocus(Qt::OtherFocusReason);
    }
    uiPaneButtonApply->setEnabled(canApply);
    uiPaneButtonRevert->setEnabled(canApply);
    ShowSaveState(state, SaveStateText(state, unsaved));
}

} // namespace drevix
