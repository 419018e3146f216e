// Undo and Redo. Every handler ends by redrawing the view, which notes its changes to the working copy;
// StoreRecord and RemoveRecord note what is stored or removed elsewhere.
#include "pane/drevix_pane.h"

#include "pane/pane_text.h"
#include "platform/base/status.h"
#include "settings/prefs_list.h"

#include <QShortcut>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace drevix {
namespace {

// The record with these bytes.
template <class Records>
RecordNumber FindBytes(RecordNumber count, const AppPrefs &prefs, const Records &record) {
    for (RecordNumber i = 0; i < count; ++i) {
        const AppPrefs *one = record(i);
        if (one != nullptr && IsSame(*one, prefs)) {
            return i;
        }
    }
    return kNoRecord;
}

bool IsOneEdit(const UndoStep &step) {
    return step.changes.size() == 1 && step.changes[0].before && step.changes[0].after;
}

} // namespace

void DrevixPane::BuildUndoControls() {
    struct Row {
        QPushButton *button;
        QKeySequence keys;
        void (DrevixPane::*act)();
    };
    const auto rows = std::to_array<Row>({
        {uiPaneButtonUndo, QKeySequence(Qt::CTRL | Qt::Key_Z), &DrevixPane::actPaneButtonUndo},
        {uiPaneButtonRedo, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), &DrevixPane::actPaneButtonRedo},
    });
    for (const Row &row : rows) {
        connect(row.button, &QPushButton::clicked, this, row.act);
        connect(new QShortcut(row.keys, fMainView), &QShortcut::activated, this, row.act);
        row.button->setToolTip(QStringLiteral("%1 (%2)").arg(row.button->toolTip(),
                                                             row.keys.toString(QKeySequence::NativeText)));
    }
}

// The record as shown in the window: the working copy if it is the edited one.
const AppPrefs *DrevixPane::PrefsHere(RecordNumber number) const {
    const AppPrefs *stored = GetAppPrefs(fDrevixBase, number);
    return number == fDrevixPrefsIndex && stored != nullptr ? &fDrevixPrefs : stored;
}

// The working copy equals its record; nothing was edited.
void DrevixPane::CopyStoredPrefs() {
    if (const AppPrefs *stored = StoredPrefs(); stored != nullptr) {
        fDrevixPrefs = *stored;
        fNotedPrefs = fDrevixPrefs;
    }
}

void DrevixPane::NoteEdit() {
    if (StoredPrefs() != nullptr && !IsSame(fNotedPrefs, fDrevixPrefs)) {
        fUndoSteps.Note(&fNotedPrefs, &fDrevixPrefs, fNotedPrefs);
        fNotedPrefs = fDrevixPrefs;
    }
    if (fOpenSteps == 0) {
        fUndoSteps.EndStep(fDrevixPrefs, fDrevixActionIndex);
    }
}

RecordNumber DrevixPane::StoreRecord(const AppPrefs &record, RecordNumber number) {
    const AppPrefs *here = PrefsHere(number);
    const std::optional<AppPrefs> before = here == nullptr ? std::nullopt : std::optional(*here);
    const RecordNumber stored = fDocument.Store(record, number);
    if (const AppPrefs *after = GetAppPrefs(fDrevixBase, stored); after != nullptr) {
        fUndoSteps.Note(before ? &*before : nullptr, after, fNotedPrefs);
    }
    return stored;
}

bool DrevixPane::RemoveRecord(RecordNumber number) {
    const AppPrefs *here = PrefsHere(number);
    const std::optional<AppPrefs> before = here == nullptr ? std::nullopt : std::optional(*here);
    if (!before || !fDocument.Remove(number)) {
        return false;
    }
    fUndoSteps.Note(&*before, nullptr, fNotedPrefs);
    return true;
}

// Reverting undid what was not in the file. Changes of another program that it brought in are not a step.
void DrevixPane::NoteReverted(const std::vector<UnsavedRecord> &unsaved) {
    fUndoSteps.EndJoining(); // a slider that it moved back is no move of the user's
    for (const UnsavedRecord &record : unsaved) {
        const AppPrefs &former = record.here ? *record.here : *record.onDisk;
        const AppPrefs *now = GetAppPrefs(fDrevixBase, FindAppPrefsAgain(fDrevixBase, former));
        if (now != nullptr || record.here) {
            fUndoSteps.Note(record.here ? &*record.here : nullptr, now, fNotedPrefs);
        }
    }
}

std::vector<AppPrefs> DrevixPane::AllPrefsHere() const {
    std::vector<AppPrefs> records;
    records.reserve(static_cast<std::size_t>(QBaseCountRecords(fDrevixBase)));
    for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase); ++i) {
        if (const AppPrefs *prefs = PrefsHere(i); prefs != nullptr) {
            records.push_back(*prefs);
        }
    }
    return records;
}

// Any number of records were replaced besides the working copy; shows the current one again.
void DrevixPane::NoteReplaced(const std::vector<AppPrefs> &before) {
    fUndoSteps.EndJoining();
    std::multimap<std::string, const AppPrefs *> now;
    for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase); ++i) {
        if (const AppPrefs *prefs = GetAppPrefs(fDrevixBase, i); prefs != nullptr) {
            now.emplace(FoldedName(*prefs), prefs);
        }
    }
    for (const AppPrefs &old : before) {
        const auto found = now.find(FoldedName(old));
        fUndoSteps.Note(&old, found == now.end() ? nullptr : found->second, fNotedPrefs);
        if (found != now.end()) {
            now.erase(found);
        }
    }
    for (const auto &added : now) {
        fUndoSteps.Note(nullptr, added.second, fNotedPrefs);
    }
}

// What differs between the window and the file, including the working copy's edits.
std::vector<UnsavedRecord> DrevixPane::UnsavedHere() const {
    std::vector<UnsavedRecord> unsaved = fDocument.Unsaved();
    const AppPrefs *stored = StoredPrefs();
    if (stored == nullptr || !IsEdited()) {
        return unsaved;
    }
    const auto known = std::ranges::find_if(
        unsaved, [&](const UnsavedRecord &record) { return record.here && IsSame(*record.here, *stored); });
    if (known != unsaved.end()) {
        known->here = fDrevixPrefs;
    } else {
        unsaved.push_back({*stored, fDrevixPrefs});
    }
    return unsaved;
}

// After other records have come in.
void DrevixPane::DropStaleSteps() {
    if (fUndoSteps.ToUndo() != nullptr || fUndoSteps.ToRedo() != nullptr) {
        std::multimap<std::string, const AppPrefs *> here;
        for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase); ++i) {
            if (const AppPrefs *prefs = PrefsHere(i); prefs != nullptr) {
                here.emplace(FoldedName(*prefs), prefs);
            }
        }
        const auto isGone = [&](const AppPrefs &prefs) { return !here.contains(FoldedName(prefs)); };
        const auto isThere = [&](const AppPrefs &prefs) {
            const auto [first, last] = here.equal_range(FoldedName(prefs));
            return std::any_of(first, last, [&](const auto &one) { return IsSame(*one.second, prefs); });
        };
        fUndoSteps.DropChangedElsewhere(isThere, isGone);
    }
    ShowUndoButtons();
}

void DrevixPane::actPaneButtonUndo() {
    const UndoStep *const step = fUndoSteps.ToUndo();
    if (step != nullptr && TakeStep(*step, &StepChange::after, &StepChange::before, step->shownBefore)) {
        fUndoSteps.WasUndone();
    }
    ShowUndoButtons();
}

void DrevixPane::actPaneButtonRedo() {
    const UndoStep *const step = fUndoSteps.ToRedo();
    if (step != nullptr && TakeStep(*step, &StepChange::before, &StepChange::after, step->shownAfter)) {
        fUndoSteps.WasRedone();
    }
    ShowUndoButtons();
}

// Shows the record of the step, and the control where it was made.
bool DrevixPane::TakeStep(const UndoStep &step, StepSide from, StepSide to, const AppPrefs &shown) {
    const bool isOneEdit = IsOneEdit(step);
    const OSErr status = isOneEdit ? TakeEdit(*(step.changes[0].*from), *(step.changes[0].*to))
                                   : TakeChanges(step, from, to, shown);
    if (status != noErr) {
        Report(status, tr("Couldn't undo or redo"));
        DropStaleSteps();
        return false;
    }
    if (isOneEdit && step.control != kNoSlot &&
        std::memcmp(step.changes[0].before->device, step.changes[0].after->device, sizeof(DevicePrefs)) !=
            0) {
        SelectControl(step.control);
    }
    return true;
}

// Goes into the working copy, so that Apply and Revert work as after any edit.
OSErr DrevixPane::TakeEdit(const AppPrefs &from, const AppPrefs &to) {
    const RecordNumber number =
        FindBytes(QBaseCountRecords(fDrevixBase), from, [this](RecordNumber i) { return PrefsHere(i); });
    if (number == kNoRecord) {
        return fnfErr;
    }
    if (number != fDrevixPrefsIndex) {
        KeepEdits(); // the companion is told at the next save
        ShowRecord(number);
    }
    fDrevixPrefs = to;
    fNotedPrefs = to;
    if (fDocument.IsUnsaved(to)) {
        KeepEdits(); // else the base would keep what was taken back
    }
    GetUIFromPrefs();
    return noErr;
}

OSErr DrevixPane::TakeChanges(const UndoStep &step, StepSide from, StepSide to, const AppPrefs &shown) {
    KeepEdits();
    OSErr status = noErr;
    for (const StepChange &change : step.changes) {
        const std::optional<AppPrefs> &wanted = change.*to;
        RecordNumber number = kNoRecord;
        if (change.*from) {
            number = FindBytes(QBaseCountRecords(fDrevixBase), *(change.*from),
                               [this](RecordNumber i) { return GetAppPrefs(fDrevixBase, i); });
        }
        const bool isDone = number == kNoRecord
                                ? !(change.*from) && fDocument.Store(*wanted, kNoRecord) != kNoRecord
                            : wanted ? fDocument.Replace(number, *wanted)
                                     : fDocument.Remove(number);
        status = isDone ? status : memFullErr;
    }
    SortDrevixBase(fDrevixBase);
    ShowTraced({shown, 0});
    return status;
}

void DrevixPane::ShowUndoButtons() {
    const bool canRedo = fUndoSteps.ToRedo() != nullptr;
    if (!canRedo && uiPaneButtonRedo->hasFocus()) {
        uiPaneButtonUndo->setFocus(Qt::OtherFocusReason);
    }
    const bool canUndo = fUndoSteps.ToUndo() != nullptr;
    if (!canUndo && uiPaneButtonUndo->hasFocus()) {
        uiSettingsTabsImages->setFocus(Qt::OtherFocusReason);
    }
    uiPaneButtonUndo->setEnabled(canUndo);
    if (uiPaneButtonRedo->isHidden() == canRedo) {
        uiPaneButtonRedo->setVisible(canRedo);
        FitSaveBar();
    }
}

} // namespace drevix
