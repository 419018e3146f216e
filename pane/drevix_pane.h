// The panel's controller: what it shows and edits is one record of the settings, the working copy. Controls
// write into the working copy at once and are redrawn from it; Apply, leaving the panel and going to the
// background bring it into the record base and the settings file.
#pragma once

#include "helperlink/driver_messages.h"
#include "keyboard/key_events.h"
#include "keyboard/keystroke_receiver.h"
#include "pane/preference_pane.h"
#include "platform/files.h"
#include "qbase/qbase.h"
#include "settings/action_commands.h"
#include "settings/app_prefs.h"
#include "ui_pane.h"

#include <QDateTime>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <array>
#include <set>
#include <string>

namespace drevix {

// What comes with the panel.
struct PaneBundle {
    FSRef resources;       // the resource folder; without a path the panel works on the settings file alone
    std::uint32_t version; // the panel's version as the settings file's stamp holds it
};

// The bundle of the running program.
[[nodiscard]] PaneBundle FindPaneBundle();

// The answer to "replace this one?" while several records are taken over.
enum class ReplaceAnswer : std::uint8_t { Ask, All, None };

// A file's state, as far as a change by another program shows in it.
struct FileStamp {
    QDateTime modified;
    qint64 size = -1; // bytes; -1 for a file that is not there
    bool operator==(const FileStamp &) const = default;
};

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
    void setProblemHandler(ProblemHandler handler) override;
    bool showRecord(const QString &appFileName) override;
    bool showPage(int page) override;
    bool showControl(const QString &key) override;

    // KeystrokeReceiver
    [[nodiscard]] bool OverrideKeysIsActive() const override;
    void ReceiveKeystroke(std::uint8_t keyCode, std::uint16_t modifiers) override;

    // Adds or replaces every record of a file; asks before each that it replaces. Writes the working copy, or
    // all records, to a file. Statuses as "settings/prefs_dictionary.h"; a failure is reported too.
    OSErr ImportAppPrefs(const QString &path);
    OSErr ExportCurrentAppPrefs(const QString &path, bool all);

    // For tests, which check the bytes of records. The base is another one after each load.
    [[nodiscard]] const AppPrefs &WorkingCopy() const { return fDrevixPrefs; }
    [[nodiscard]] QBaseHandle Base() const { return fDrevixBase.get(); }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    // Lifecycle and the flow of settings (pane_lifecycle.cpp)
    void applicationStateChanged(Qt::ApplicationState state);
    void appDidBecomeActive();
    void appDidResignActive();
    void actPaneButtonApply();
    void actPaneButtonRevert();
    OSErr GetBaseFromFile();
    OSErr SaveBaseToFile();
    bool SaveEverything();
    [[nodiscard]] FileStamp StampOfPrefsFile();
    [[nodiscard]] bool IsFileChangedOutside();
    bool TakeOutsideChanges();
    void GetPrefsFromBase();
    void SavePrefsToBase();
    void KeepEdits();
    void LoadDefaultPrefs();
    [[nodiscard]] const AppPrefs *StoredPrefs() const;
    [[nodiscard]] bool IsEdited() const;
    void UpdateRevertApplyButtons();
    void Report(OSErr status, const QString &doing);
    void Tell(const QString &problem);

    // The list of applications (pane_list.cpp)
    void UpdateTargetMenu();
    [[nodiscard]] QString TargetTitle(RecordNumber number) const;
    void ShowTargetTitle(RecordNumber number);
    void SelectTarget();
    void actSettingsMenuTarget(int item);
    void PerformListCommand(int tag);
    void actSettingsButtonNew();
    void actSettingsButtonDelete();
    void actSettingsRadioDisable();
    void actExport();
    void actImport();
    void MarkSelectedDrevixPrefs();
    void SelectMarkedDrevixPrefs();
    RecordNumber AddOrReplaceAppPrefs(const AppPrefs &record);
    [[nodiscard]] bool MayReplace(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany);
    RecordNumber StoreConfirmed(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany);
    void ShowStored(RecordNumber number);
    void ShowRecord(RecordNumber number);

    // Making the view (pane_controls.cpp)
    struct ModifierBox {
        QCheckBox *box;
        std::uint16_t mask;
    };
    void BuildMenus();
    void BuildLooks();
    void ConnectControls();
    void ConnectActionControls();
    [[nodiscard]] std::array<ModifierBox, 10> ModifierBoxes() const;
    [[nodiscard]] std::array<QTreeWidget *, 3> ControlLists() const; // by page
    [[nodiscard]] QComboBox *MenuOf(const GroupMenu &group) const;

    // Drawing the view from the working copy (pane_redraw.cpp)
    void GetUIFromPrefs();
    [[nodiscard]] SlotIndex SelectedSlot() const;
    void ShowDeviceValues();
    void ShowRingSliders();
    void ShowControlActions();
    void ShowDefaultsButton();
    [[nodiscard]] QStringList DefaultValueTexts(ControlGroup group) const;
    void EnableMenus();
    void ShowAction();
    [[nodiscard]] QString PlainActionText(ActionCommand command) const;
    void ShowScroll(const ActionSlot &slot);
    static void ShowDelay(QComboBox *menu, int item, int delay, bool isEnabled);
    void ShowModifiers(const ActionSlot &slot);
    [[nodiscard]] QString ActionText(const ActionSlot &slot) const;

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
    [[nodiscard]] std::int32_t RegisterHelpBooks() const;
    void OpenHelpPage(const char *page);
    void OpenWebPage(const char *address);
    void actPaneButtonInfo();
    void actPaneButtonManual();
    void actInfoButtonManual();
    void actInfoButtonTrainer();
    void actInfoButtonMainURL();
    void actInfoButtonSupportURL();

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

    QPointer<QWidget> fMainView; // made by mainView; its owner is the host
    ProblemHandler fProblemHandler;
    bool fIsSelected = false;
    bool fIsDrawnOnly = false;

    PaneBundle fPrefPaneBundle;
    QBaseOwner fDrevixBase;             // all settings records; null if there was no memory
    RecordNumber fDrevixPrefsIndex = 0; // the record being edited
    SlotIndex fDrevixActionIndex = kNoSlot;
    AppPrefs fDrevixPrefs = gDefaultGlobalPrefs;     // the working copy
    AppPrefs fDefaultAppPrefs = gDefaultGlobalPrefs; // the factory's values for it
    QTimer fDeviceCheckTimer{this};
    std::int32_t fDeviceCount = -1; // as shown; -1 before the first check
    DeviceList fDeviceList = {};    // filled by the helper's answers
    QString fPrefsPath;             // of the settings file, as it was last found
    FileStamp fFileStamp;           // of the settings file as it was last read or written
    std::set<std::string> fUnsaved; // folded file names of stored records that differ from the settings file
};

} // namespace drevix
