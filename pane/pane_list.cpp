// The list of applications: choosing a record, adding, deleting, exporting and importing records.
#include "pane/drevix_pane.h"

#include "pane/application_chooser.h"
#include "pane/confirm_panel.h"
#include "pane/editor_tables.h"
#include "pane/file_panels.h"
#include "pane/pane_text.h"
#include "pane/pop_up_menu.h"
#include "pane/target_item.h"
#include "platform/base/status.h"
#include "platform/files/kept_bytes.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <QFileInfo>
#include <QStandardItemModel>

#include <algorithm>
#include <tuple>
#include <vector>

namespace drevix {
namespace {

// The result of an import, with the place and reason if the file is damaged.
QString ImportProblem(OSErr status, const PropertyListProblem &problem) {
    if (problem.text.empty()) {
        return StatusSentence(status);
    }
    const QString text = TranslatedText(problem.text);
    return problem.line == 0 ? text : DrevixPane::tr("line %1: %2").arg(problem.line).arg(text);
}

bool IsAlike(const AppPrefs *a, const AppPrefs &b) {
    return a != nullptr && a->application == b.application &&
           PStringCmp(a->appFileName.data(), b.appFileName.data()) == 0;
}

} // namespace

// Rebuilds the record items with two changes to the model, however many there are.
void DrevixPane::UpdateTargetMenu() {
    QStandardItemModel *model = ModelOf(uiSettingsMenuTarget);
    model->removeRows(kFirstRecordItem, model->rowCount() - kFirstRecordItem - kTargetFixedItems);
    QList<QStandardItem *> items;
    const std::int32_t count = CountListedPrefs(fDrevixBase);
    items.reserve(count);
    for (RecordNumber i = 1; i < count; ++i) {
        items.append(new TargetItem(TargetStateOf(i), &fIcons));
    }
    model->invisibleRootItem()->insertRows(kFirstRecordItem, items);
    ShowTargetTitle(0);
    SelectTarget();
}

// What the list shows for a record; nothing for a missing one.
TargetState DrevixPane::TargetStateOf(RecordNumber number) const {
    const bool isShown = number == fDrevixPrefsIndex;
    const AppPrefs *prefs = isShown ? &fDrevixPrefs : GetAppPrefs(fDrevixBase, number);
    if (prefs == nullptr) {
        return {};
    }
    const bool isUnsaved = fDocument.IsUnsaved(*prefs) || (isShown && IsEdited());
    const bool isGlobal = number == 0;
    return {NameOf(*prefs), isGlobal ? QString() : FileNameKey(prefs->appFileName),
            kTargetIsRecord | (isGlobal ? kTargetIsGlobal : 0) |
                (prefs->factory != 0 && !isGlobal ? kTargetIsFactory : 0) |
                (prefs->active == 0 ? kTargetIsOff : 0) | (isUnsaved ? kTargetIsUnsaved : 0)};
}

void DrevixPane::ShowTargetTitle(RecordNumber number) {
    const int position = TargetItemOfRecord(number);
    if (position >= uiSettingsMenuTarget->count() - kTargetFixedItems) {
        return; // one that is being imported, and not in the list yet
    }
    if (const TargetState state = TargetStateOf(number); state.marks != 0) {
        static_cast<TargetItem *>(ModelOf(uiSettingsMenuTarget)->item(position))->SetState(state);
    }
}

void DrevixPane::ShowTargetTitles() {
    for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase); ++i) {
        ShowTargetTitle(i);
    }
}

void DrevixPane::SelectTarget() {
    uiSettingsMenuTarget->setCurrentIndex(TargetItemOfRecord(fDrevixPrefsIndex));
}

void DrevixPane::actSettingsMenuTarget(int item) {
    const int command = item - (uiSettingsMenuTarget->count() - kTargetFixedItems);
    if (command >= 0) {
        SelectTarget(); // the list never stays on a command
        PerformListCommand(kTargetCommands[static_cast<std::size_t>(command)].tag);
        return;
    }
    SavePrefsToBase();
    GetPrefsFromBase();
    GetUIFromPrefs();
}

void DrevixPane::PerformListCommand(int tag) {
    switch (tag) {
    case kTagNew:
        actSettingsButtonNew();
        break;
    case kTagDelete:
        actSettingsButtonDelete();
        break;
    case kTagExport:
        actExport();
        break;
    case kTagImport:
        actImport();
        break;
    case kTagInformation:
        actPaneButtonInfo();
        break;
    default: // a separator; the installer is dimmed
        break;
    }
}

void DrevixPane::actSettingsButtonNew() {
    const auto hasSettings = [this](const std::string &fileName) {
        return FindAppPrefs(fDrevixBase, StoredFileName(fileName).data()) != kNoRecord;
    };
    ApplicationChooser chooser(fMainView->window(), hasSettings);
    if (chooser.exec() != QDialog::Accepted || chooser.Chosen().fileName.empty()) {
        return;
    }
    if (chooser.IsToShow()) {
        const RecordNumber number =
            FindAppPrefs(fDrevixBase, StoredFileName(chooser.Chosen().fileName).data());
        uiSettingsMenuTarget->setCurrentIndex(TargetItemOfRecord(std::max(0, number)));
        actSettingsMenuTarget(uiSettingsMenuTarget->currentIndex());
        return;
    }
    AddApplication(chooser.Chosen());
}

void DrevixPane::AddApplication(const NewApplication &application) {
    SavePrefsToBase();
    fAddedName = TextOf(application.shownName); // in full, for the question that may come
    std::ignore = AddOrReplaceAppPrefs(         // shown or reported there
        MakeAppPrefs(fDrevixBase, application.signature, application.fileName, application.shownName));
    fAddedName.clear();
}

void DrevixPane::actSettingsButtonDelete() {
    if (fDrevixPrefsIndex < 1 || fDrevixPrefs.factory != 0) {
        return;
    }
    const auto names = [this] { return std::pair(FoldedName(fDrevixPrefs), ShownName(fDrevixPrefs)); };
    const auto asked = names();
    if (ConfirmPanel panel(ConfirmPanel::Kind::Remove, asked.second, fMainView->window());
        panel.exec() != QDialog::Accepted || fDrevixPrefsIndex < 1 || names() != asked) {
        return; // refused, or another program took the record away meanwhile
    }
    if (!RemoveRecord(fDrevixPrefsIndex)) {
        Report(memFullErr, tr("Couldn't delete settings for %1").arg(asked.second));
        return;
    }
    ShowRecord(fDrevixPrefsIndex - 1);
}

void DrevixPane::actSettingsRadioDisable() {
    fDrevixPrefs.active = uiSettingsRadioActive->isChecked() ? 1 : 0;
    GetUIFromPrefs();
}

void DrevixPane::MarkSelectedDrevixPrefs() {
    QBaseSetAllRecordFlags(fDrevixBase, 0);
    QBaseSetRecordFlags(fDrevixBase, fDrevixPrefsIndex, kSelectedRecordFlag);
}

void DrevixPane::SelectMarkedDrevixPrefs() {
    const RecordNumber marked = QBaseFindRecordFlags(fDrevixBase, kSelectedRecordFlag);
    fDrevixPrefsIndex = marked == kNoRecord ? 0 : marked;
    QBaseSetRecordFlags(fDrevixBase, marked, 0);
}

RecordNumber DrevixPane::AddOrReplaceAppPrefs(const AppPrefs &record) {
    ReplaceAnswer answer = ReplaceAnswer::Ask;
    const RecordNumber number = StoreConfirmed(record, answer, false);
    if (number != kNoRecord) {
        ShowStored(number);
    }
    return number;
}

// Whether a record may replace the one with its name; asks unless answered for all.
bool DrevixPane::MayReplace(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany) {
    if (answer != ReplaceAnswer::Ask) {
        return answer == ReplaceAnswer::All;
    }
    const QString name = fAddedName.isEmpty() ? NameOf(record) : fAddedName;
    ConfirmPanel panel(ConfirmPanel::Kind::Replace, name, fMainView->window());
    panel.NameReplaced(NameOfReplaced(record, name));
    panel.OfferAll(isOneOfMany);
    const bool agreed = panel.exec() == QDialog::Accepted;
    if (panel.IsForAll()) {
        answer = agreed ? ReplaceAnswer::All : ReplaceAnswer::None;
    }
    return agreed;
}

// Whose settings would be replaced, if that is another application: Mac OS Roman may turn two names into one.
QString DrevixPane::NameOfReplaced(const AppPrefs &record, const QString &name) const {
    const AppPrefs *replaced = GetAppPrefs(fDrevixBase, FindReplacedAppPrefs(fDrevixBase, record));
    QString old = replaced == nullptr ? name : NameOf(*replaced);
    if (old != name) {
        return old;
    }
    for (const InstalledApplication &application : fIcons.Installed()) {
        if (application.name != name && application.fileName == FileNameKey(record.appFileName)) {
            return application.name;
        }
    }
    return {};
}

// Adds the record, or replaces the one with its name once the user agrees.
RecordNumber DrevixPane::StoreConfirmed(const AppPrefs &record, ReplaceAnswer &answer, bool isOneOfMany) {
    RecordNumber replaced = FindReplacedAppPrefs(fDrevixBase, record);
    if (replaced != kNoRecord) {
        if (!MayReplace(record, answer, isOneOfMany)) {
            return kNoRecord;
        }
        // While the question was open, another program's settings may have been loaded.
        replaced = FindReplacedAppPrefs(fDrevixBase, record);
    }
    const RecordNumber number = StoreRecord(record, replaced);
    if (number == kNoRecord) {
        Report(memFullErr, tr("Couldn't add settings for %1").arg(ShownName(record)));
        return kNoRecord;
    }
    if (number == fDrevixPrefsIndex) {
        CopyStoredPrefs(); // the program may go to the background at the next question, which stores it
    }
    return number;
}

// Shows a record that was just stored, at its place in the sorted list.
void DrevixPane::ShowStored(RecordNumber number) {
    fDrevixPrefsIndex = number;
    MarkSelectedDrevixPrefs();
    SortDrevixBase(fDrevixBase);
    SelectMarkedDrevixPrefs();
    ShowRecord(fDrevixPrefsIndex);
}

// Rebuilds the list and edits a record. Does not store the working copy first.
void DrevixPane::ShowRecord(RecordNumber number) {
    fDrevixPrefsIndex = number;
    CopyStoredPrefs();
    UpdateTargetMenu();
    GetPrefsFromBase();
    GetUIFromPrefs();
}

RecordTrace DrevixPane::TraceEdited() const {
    RecordTrace trace{fDrevixPrefs};
    for (RecordNumber i = 0; i < fDrevixPrefsIndex; ++i) {
        trace.among += IsAlike(GetAppPrefs(fDrevixBase, i), fDrevixPrefs) ? 1 : 0;
    }
    return trace;
}

// Shows a record after the base has changed, telling apart records with the same file name; the global record
// if it is gone.
void DrevixPane::ShowTraced(const RecordTrace &trace) {
    RecordNumber found = kNoRecord;
    int before = 0;
    for (RecordNumber i = 0; before <= trace.among && i < QBaseCountRecords(fDrevixBase); ++i) {
        if (IsAlike(GetAppPrefs(fDrevixBase, i), trace.record)) {
            found = i;
            ++before;
        }
    }
    if (found == kNoRecord) { // with another signature, as a factory record may give one
        found = FindReplacedAppPrefs(fDrevixBase, trace.record);
    }
    ShowRecord(found == kNoRecord ? 0 : found);
}

void DrevixPane::actExport() {
    ExportPanel panel(fMainView->window());
    if (panel.exec() == QDialog::Accepted) {
        std::ignore = ExportCurrentAppPrefs(panel.Path(), panel.IsForAll()); // reported there
    }
}

void DrevixPane::actImport() {
    ImportPanel panel(fMainView->window());
    if (panel.exec() == QDialog::Accepted) {
        std::ignore = ImportAppPrefs(panel.Path()); // reported there
    }
}

void DrevixPane::openFile(const QString &path) {
    ConfirmPanel panel(ConfirmPanel::Kind::Import, QFileInfo(path).fileName(), fMainView->window());
    if (panel.exec() == QDialog::Accepted) {
        std::ignore = ImportAppPrefs(path); // reported there
    }
}

OSErr DrevixPane::ExportCurrentAppPrefs(const QString &path, bool all) {
    if (all) {
        SavePrefsToBase();
    }
    RecordNumber next = 0;
    const auto nextRecord = [&]() -> const AppPrefs * {
        if (!all) {
            return next++ == 0 ? &fDrevixPrefs : nullptr;
        }
        const AppPrefs *prefs = nullptr;
        while (prefs == nullptr && next < QBaseCountRecords(fDrevixBase)) {
            prefs = GetAppPrefs(fDrevixBase, next++); // null for what is no settings record
        }
        return prefs;
    };
    const OSErr status = WriteAppPrefsFile(path.toStdString(), nextRecord);
    const std::string kept = status == noErr ? std::string() : FindKeptCopy(path.toStdString());
    if (kept.empty()) {
        Report(status, tr("Couldn't export"));
    } else {
        Tell(tr("Couldn't export: %1. What %2 held is kept in %3, and comes back when it "
                "can be written again.")
                 .arg(StatusSentence(status), path, TextOf(kept)));
    }
    return status;
}

OSErr DrevixPane::ImportAppPrefs(const QString &path) {
    std::vector<AppPrefs> records;
    PropertyListProblem problem;
    std::size_t skipped = 0;
    const OSErr status = ReadAppPrefsFile(
        path.toStdString(), [&](const AppPrefs &record) { records.push_back(record); }, &problem, &skipped);
    if (status != noErr) {
        Tell(tr("Couldn't import this file: %1.").arg(ImportProblem(status, problem)));
        return status;
    }
    Tell(skipped == 0 ? QString()
                      : tr("Not enough memory for %1 of the %2 records in the file.")
                            .arg(skipped)
                            .arg(records.size() + skipped));
    SavePrefsToBase();
    const OneStep step(*this);
    ReplaceAnswer answer = ReplaceAnswer::Ask;
    RecordNumber last = kNoRecord;
    for (const AppPrefs &record : records) {
        const RecordNumber number = StoreConfirmed(record, answer, records.size() > 1);
        last = number != kNoRecord ? number : last;
    }
    if (last != kNoRecord) {
        ShowStored(last); // the list is rebuilt once, when all are stored
    }
    return noErr;
}

bool DrevixPane::showRecord(const QString &appFileName) {
    RecordNumber number = 0;
    if (!appFileName.isEmpty()) {
        Str63 name{};
        getPascalString(appFileName.toStdString(), name.data(), kMaxFileNameLength);
        number = FindAppPrefs(fDrevixBase, name.data());
    }
    if (GetAppPrefs(fDrevixBase, number) == nullptr) {
        return false;
    }
    KeepEdits(); // the companion is told at the next save
    ShowRecord(number);
    return true;
}

} // namespace drevix
