// The panel's controller: what it shows and edits is one record of the settings, the working copy. Controls
// write into the working copy at once and are redrawn from it; Apply, leaving the panel and going to the
// background bring it into the record base and the settings file.
//
// Who owns what: the document owns the settings file's path and stamp, the record base, and what in it is not
// saved yet. The controller owns the working copy and the place of its record in the base; it changes the base
// through the document alone, and stores the working copy there before anything may bring in other records.
#pragma once

#include "document/settings_document.h"
#include "helperlink/driver_messages.h"
#include "keyboard/layout_family.h"
#include "keyboard/qt/key_events.h"
#include "keyboard/qt/keystroke_receiver.h"
#include "pane/application_icons.h"
#include "pane/preference_pane.h"
#include "pane/save_bar.h"
#include "pane/sheet.h"
#include "pane/undo_steps.h"
#include "platform/files/files.h"
#include "qbase/qbase.h"
#include "settings/action_commands.h"
#include "settings/action_paste.h"
#include "settings/app_prefs.h"
#include "ui_pane.h"

#include <QMap>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <array>
#include <chrono>
#include <optional>
#include <vector>

class QAction;

namespace drevix {

// The files that come with the panel.
struct PaneBundle {
    FSRef resources;       // the resource folder; without a path the panel works on the settings file alone
    std::uint32_t version; // the panel's version as the settings file's stamp holds it
};

// The bundle of the running program.
[[nodiscard]] PaneBundle FindPaneBundle();

// The answer to "Replace this one?" when several records are imported.
enum class ReplaceAnswer : std::uint8_t { Ask, All, None };

inline constexpr const char *kHelperApplication = "DrevixHelper.app";

// How long to wait for another program's save when leaving the panel or going to the background.
inline constexpr std::chrono::milliseconds kLongestWait{2000};

// Identifies a record among others, to find it again.
struct RecordTrace {
    AppPrefs record;
    int among = 0; // how many of its signature and file name come before it
};

class FindPanel;
class ItemField;
class KeystrokeField;
class LayoutWatch;
class LiveView;
struct EarlierSettings;
class StepBadge;
struct TargetState;
struct SearchEntry;
struct TypedKeystroke;

class DrevixPane : public QObject,
                   public PreferencePane,
                   public KeystrokeReceiver,
                   private Ui::DrevixPaneView {
    Q_OBJECT
    Q_INTERFACES(drevix::PreferencePane)

  public:
    explicit DrevixPane(PaneBundle bundle = FindPaneBundle());
    ~DrevixPane() override;

    // PreferencePane
    QWidget *mainView() override;
    void setDrawnOnly() override;
    void mainViewDidLoad() override;
    void didSelect() override;
    void willUnselect() override;
    bool mayClose() override;
    void setProblemHandler(ProblemHandler handler) override;
    bool showRecord(const QString &appFileName) override;
    bool showPage(int page) override;
    bool showControl(const QString &key) override;
    bool showPressed(const QString &key) override;
    void openFile(const QString &path) override;

    // KeystrokeReceiver
    [[nodiscard]] bool OverrideKeysIsActive() const override;
    void ReceiveKeystroke(std::uint8_t keyCode, std::uint16_t modifiers) override;

    // Adds or replaces every record of a file; asks before each that it replaces. Writes the working copy, or
    // all records, to a file. Statuses as "settings/prefs_dictionary.h"; a failure is reported too.
    OSErr ImportAppPrefs(const QString &path);
    OSErr ExportCurrentAppPrefs(const QString &path, bool all);

    // For tests, which check the bytes of records. The base is another one after each load.
    [[nodiscard]] const AppPrefs &WorkingCopy() const { return fDrevixPrefs; }
    [[nodiscard]] QBaseHandle Base() const { return fDrevixBase; }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    // Lifecycle and the flow of settings (pane_lifecycle.cpp)
    void applicationStateChanged(Qt::ApplicationState state);
    void appDidBecomeActive();
    void appDidResignActive();
    void actPaneButtonRevert();
    OSErr GetBaseFromFile();
    void TakeOutsideChanges();
    void GetPrefsFromBase();
    void SavePrefsToBase();
    void KeepEdits();
    void LoadDefaultPrefs();
    [[nodiscard]] const AppPrefs *StoredPrefs() const;
    [[nodiscard]] bool IsEdited() const;
    [[nodiscard]] int CountUnsaved() const;
    void UpdateRevertApplyButtons();
    void Report(OSErr status, const QString &doing);
    void Tell(const QString &problem);
    void TellOfSaving(const QString &problem);

    // Saving, and what becomes of settings that cannot be saved (pane_save.cpp)
    void BuildSaveControls();
    void actPaneButtonApply();
    OSErr SaveBaseToFile(std::chrono::milliseconds wait);
    bool SaveEverything(std::chrono::milliseconds wait);
    void SaveForLeaving();
    void SaveSoonIfInactive();
    void AskAbout(const std::vector<RecordConflict> &conflicts);
    void TellConflicts(const std::vector<RecordConflict> &conflicts);
    [[nodiscard]] QStringList SaveProblems(const SaveResult &result) const;
    [[nodiscard]] static QStringList SaveConflicts(const SaveResult &result);
    void TellCompanionProblems(const KorvaneResults &results);
    bool ExportBeforeClosing();
    void ShowSaveButton(SaveState state);
    void ShowSaveState(SaveState state, const QString &text);
    [[nodiscard]] QString SaveStateText(SaveState state, int unsaved) const;
    [[nodiscard]] QString UnsavedName() const;
    void LookForOutsideChanges();

    // Earlier settings (pane_history.cpp)
    QAction *BuildHistoryAction(); // with its shortcut in the view; for a menu too
    void actHistory();
    void TakeEarlier(const EarlierSettings &earlier, RecordNumber record);

    // Undo and Redo (pane_undo.cpp)
    using StepSide = std::optional<AppPrefs> StepChange::*;
    class OneStep;
    void BuildUndoControls();
    [[nodiscard]] const AppPrefs *PrefsHere(RecordNumber number) const;
    void CopyStoredPrefs();
    void NoteEdit();
    RecordNumber StoreRecord(const AppPrefs &record, RecordNumber number);
    bool RemoveRecord(RecordNumber number);
    void NoteReverted(const std::vector<UnsavedRecord> &unsaved);
    [[nodiscard]] std::vector<AppPrefs> AllPrefsHere() const;
    void NoteReplaced(const std::vector<AppPrefs> &before);
    [[nodiscard]] std::vector<UnsavedRecord> UnsavedHere() const;
    void DropStaleSteps();
    void actPaneButtonUndo();
    void actPaneButtonRedo();
    bool TakeStep(const UndoStep &step, StepSide from, StepSide to, const AppPrefs &shown);
    OSErr TakeEdit(const AppPrefs &from, const AppPrefs &to);
    OSErr TakeChanges(const UndoStep &step, StepSide from, StepSide to, const AppPrefs &shown);
    void ShowUndoButtons();

    // The list of applications (pane_list.cpp)
    void UpdateTargetMenu();
    [[nodiscard]] TargetState TargetStateOf(RecordNumber number) const;
    [[nodiscard]] QString NameOf(const AppPrefs &prefs) const;
    void ShowTargetTitle(RecordNumber number);
    void ShowTargetTitles();
    void SelectTarget();
    void actSettingsMenuTarget(int item);
    void PerformListCommand(int tag);
    void actSettingsButtonNew();
    void AddApplication(const NewApplication &application);
    void actSettingsButtonDelete();
    void actSettingsRadioDisable();
    void actExport();
    void actImport();
    void MarkSelectedDrevixPrefs();
    void SelectMarkedDrevixPrefs();
    RecordNumber AddOrReplaceAppPrefs(const AppPrefs &record);
    [[nodiscard]] bool MayReplace(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany);
    [[nodiscard]] QString NameOfReplaced(const AppPrefs &record, const QString &name) const;
    RecordNumber StoreConfirmed(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany);
    void ShowStored(RecordNumber number);
    void ShowRecord(RecordNumber number);
    [[nodiscard]] RecordTrace TraceEdited() const;
    void ShowTraced(const RecordTrace &trace);

    // The side bar, the header and the commands in them (pane_side_bar.cpp)
    void BuildTargets();
    void BuildTargetActions();
    void BuildSideBar();
    void ShowHeader();
    void ShowSide(bool isShown);
    void GoToNextArea(int way);
    void StartIcons();
    void ShowNames();

    // The strip of messages (pane_strip.cpp)
    void BuildStrip();
    void ShowProblem(const QString &problem);
    void ShowHelperState();
    void ShowIntroduction();
    void EndIntroduction();
    void PlaceBadges();
    void ShowConflict();
    void actShowTheirs();
    void actKeepMine();

    // Making the view (pane_controls.cpp)
    struct ModifierBox {
        QCheckBox *box;
        std::uint16_t mask;
    };
    void BuildMenus();
    void ShowActionIcons();
    void BuildPages();
    void BuildFields();
    void BuildLooks();
    void BuildAreas();
    void ConnectControls();
    void ConnectActionControls();
    [[nodiscard]] std::array<ModifierBox, 10> ModifierBoxes() const;
    [[nodiscard]] std::array<PopUpMenu *, 3> ControlMenus() const; // by page
    [[nodiscard]] QComboBox *MenuOf(const GroupMenu &group) const;

    // Drawing the view from the working copy (pane_redraw.cpp)
    void GetUIFromPrefs();
    [[nodiscard]] SlotIndex SelectedSlot() const;
    void ShowDeviceValues();
    void ShowRingSliders();
    void ShowControlActions();
    void ShowDefaultsButton();
    void ShowFactoryButton();
    [[nodiscard]] QStringList DefaultValueTexts(ControlGroup group) const;
    void EnableMenus();
    void ShowAction();
    [[nodiscard]] QString PlainActionText(ActionCommand command) const;
    void ShowScroll(const ActionSlot &slot);
    static void ShowDelay(QComboBox *menu, int item, int delay, bool isEnabled);
    void ShowModifiers(const ActionSlot &slot);
    [[nodiscard]] QString ActionText(const ActionSlot &slot) const;

    [[nodiscard]] ControlText ControlTextOf(SlotIndex slot, const AppPrefs &prefs, const AppPrefs &factory,
                                            const OtherFamilies &others) const;

    // The menu of a control, and the clipboard (pane_copy.cpp)
    void BuildControlMenu();
    void ShowControlMenu(const QPoint &globalPoint);
    void actCopyAction();
    void actPasteAction();
    void actNoAction();
    void actBackToFactory();
    void actCopyAssignments();
    void actPasteAssignments();
    void actDuplicate();
    void TakeAction(const ActionSlot &action);
    void TellLeftOut(const std::vector<RefusedAction> &refused, const AppPrefs &target);

    // Finding an action, and the overview (pane_find.cpp)
    void BuildShortcuts();
    void actFindAction();
    void TakeFound(const SearchEntry &entry);
    void TakeTyped(const TypedKeystroke &keystroke);
    [[nodiscard]] QString RefusalText(ActionRefusal refusal, ActionCommand command) const;
    void actOverview();
    [[nodiscard]] std::vector<SheetContents> MakeSheets(bool ofAll) const;
    [[nodiscard]] SheetContents SheetOf(const AppPrefs &prefs, const AppPrefs &factory,
                                        const OtherFamilies &others) const;

    // The keystroke (pane_keystroke.cpp)
    void BuildKeystrokeControls();
    void UseCommandKey(CommandKey key);
    void actSettingsMenuCommandKey(CommandKey key);
    void ShowKeystroke(const ActionSlot &slot);
    void ShowKeystrokeHint();
    [[nodiscard]] QString SharingText(const ActionSlot &slot) const;

    // The helper, the devices, information and help (pane_devices.cpp)
    void BuildDeviceControls();
    void StartHelper();
    void CheckDevices();
    void ShowDevices();
    void FitSaveBar();
    [[nodiscard]] bool HasDevice() const;
    [[nodiscard]] bool IsHelperMissing() const;
    [[nodiscard]] std::int32_t RegisterHelpBooks() const;
    void OpenHelpPage(const char *page);
    void OpenWebPage(const char *address);
    void actPaneButtonInfo();
    void actPaneButtonManual();
    void actInfoButtonManual();
    void actInfoButtonTrainer();
    void actInfoButtonMainURL();
    void actInfoButtonSupportURL();

    // The device as it is used (pane_live.cpp)
    void BuildLiveView();
    void actControlTouched(SlotIndex slot);
    void TellBeside(QString &told, const QString &line);
    void UseLayout();
    void LayoutRebuilt();
    void LayoutSwitched(bool isOther);

    // The item to open (pane_items.cpp)
    void BuildItemControls();
    void actSettingsButtonChooseItem();
    void chooseItemDidEnd(const QString &path);
    void SetOpenItem(SlotIndex slot, const QString &path);
    void actSettingsButtonOpenItem();
    void ShowOpenItem(const ActionSlot &slot);
    [[nodiscard]] static QString OpenItemText(const ActionSlot &slot);

    // The editor's handlers (pane_editor.cpp)
    [[nodiscard]] ActionSlot *EditedSlot();
    void SelectControl(SlotIndex slot);
    void actSettingsMenuControls();
    void actSettingsBoxClick();
    void actSettingsBoxAllAxis();
    void actSettingsSliderNavSens(int value);
    void actSettingsSliderNavSpeed(int value);
    void actSettingsSliderToolSens(int value);
    void actSettingsMenuAction(int position);
    void actSettingsMenuGroup(const GroupMenu &menu, int position);
    void actSettingsMenuToolMenu(int position);
    void actSettingsMenuKeyRepeat(int position);
    void actSettingsMenuAutoRepeat(int position);
    void actSettingsMenuExtraKeys(int position);
    void GetKeyModifier(std::uint16_t mask, bool isOn);
    void actSettingsButtonDefaults(ControlGroup group);
    void UpdateToolMenu();
    [[nodiscard]] int FindInToolMenu(std::uint32_t crc) const;

    QPointer<QWidget> fMainView;                        // made by mainView; its owner is the host
    KeystrokeField *uiSettingsFieldKeystroke = nullptr; // belong to the main view
    ItemField *uiSettingsFieldOpenItem = nullptr;
    FindPanel *fFindPanel = nullptr; // made when it is first asked for; belongs to the main view
    LiveView *fLiveView = nullptr;   // belongs to the main view
    LayoutWatch *fLayoutWatch = nullptr;
    ProblemHandler fProblemHandler;
    QString fTold;       // what was told last; empty when all is well
    QString fDeviceLine; // the same, where it is about what a control did
    QString fLayoutLine; // the same, about the keyboard layout
    bool fIsSelected = false;
    bool fIsDrawnOnly = false;
    bool fIsHostActive = true; // while selected: edits wait for Apply

    ApplicationIcons fIcons;
    QMap<int, QAction *> fTargetActions; // by tag
    std::array<StepBadge *, 3> fBadges = {};
    std::vector<RecordConflict> fConflicts; // not answered yet
    bool fIsFirstRun = false;               // there was no settings file
    bool fIsPainted = false;
    QString fAddedName;                   // of the application that is being added
    std::optional<QString> fHeaderIconOf; // the application whose icon the header shows
    int fTicksWithoutHelper = 0;          // of the device timer, one after the other

    PaneBundle fPrefPaneBundle;
    SettingsDocument fDocument;
    QBaseHandle fDrevixBase = nullptr;  // the document's: all settings records; null if there was no memory
    RecordNumber fDrevixPrefsIndex = 0; // the record being edited
    SlotIndex fDrevixActionIndex = kNoSlot;
    AppPrefs fDrevixPrefs = gDefaultGlobalPrefs;     // the working copy
    AppPrefs fDefaultAppPrefs = gDefaultGlobalPrefs; // the factory's values for it
    AppPrefs fNotedPrefs = gDefaultGlobalPrefs;      // the working copy as the steps of Undo know it
    UndoSteps fUndoSteps;
    int fOpenSteps = 0; // while one step is made of several edits
    FSRef fFactory;     // its folder, for the current layout
    OtherFamilies fOtherFamilies{{}, gDefaultGlobalPrefs};
    QTimer fDeviceCheckTimer{this};
    std::int32_t fDeviceCount = -1; // as shown; -1 before the first check
    DeviceList fDeviceList = {};    // filled by the helper's answers
    OSErr fSaveStatus = noErr;      // of the last save; noErr once the file holds the base
    QString fSaveProblem;           // what was told of it
    bool fIsConflictShown = false;  // it stays to be read until the user saves again
    QTimer fRetryTimer{this};       // Apply's next try for the lock
    QTimer fRestTimer{this};        // since the last edit while the host is inactive
};

// While it lives, all edits are one step of Undo.
class DrevixPane::OneStep {
  public:
    explicit OneStep(DrevixPane &pane) : fPane(pane) { ++fPane.fOpenSteps; }
    OneStep(const OneStep &) = delete;
    OneStep &operator=(const OneStep &) = delete;
    ~OneStep() {
        --fPane.fOpenSteps;
        fPane.NoteEdit();
        fPane.ShowUndoButtons();
    }

  private:
    DrevixPane &fPane;
};

} // namespace drevix
