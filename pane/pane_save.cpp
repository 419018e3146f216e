// Saving: when the base is written to the settings file, what the user is told, and what to do when it fails.
#include "pane/drevix_pane.h"

#include "helperlink/driver_messages.h"
#include "pane/file_panels.h"
#include "pane/keystroke_field.h"
#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/unsaved_panel.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "platform/files/kept_bytes.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"
#include "util/items/items_folder.h"

#include <QAccessible>
#include <QApplication>
#include <QShortcut>

#include <array>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

using namespace std::chrono_literals;

constexpr auto kRetryInterval = 500ms;
constexpr auto kRest = 1s; // of a wheel that is turned over a window in the background
constexpr qsizetype kMostNames = 5;

// What to say about records that both sides changed, by what each side did.
struct ConflictText {
    bool isOurs;   // here: there still
    bool isTheirs; // in the file: there still
    const char *text;
};
constexpr auto kConflictTexts = std::to_array<ConflictText>({
    {true, true,
     QT_TRANSLATE_NOOP("drevix::DrevixPane",
                       "Another program changed %1 too; the changes made here are kept.")},
    {true, false,
     QT_TRANSLATE_NOOP("drevix::DrevixPane",
                       "Another program deleted %1, which was changed here; it is kept.")},
    {false, true,
     QT_TRANSLATE_NOOP("drevix::DrevixPane",
                       "Another program changed %1, which was deleted here; it stays deleted.")},
});

// As the list of applications calls it.
QString NameOf(const RecordConflict &conflict) {
    const QString name = conflict.name.empty() ? QCoreApplication::translate("Controls", "Global Settings")
                                               : TextOf(PlainText(conflict.name));
    return DrevixPane::tr("\"%1\"").arg(name);
}

// The names as one text, kept short after a large import.
QString Listed(QStringList names) {
    const auto more = names.size() - kMostNames;
    if (more <= 0) {
        return names.join(QLatin1String(", "));
    }
    names = names.mid(0, kMostNames);
    return DrevixPane::tr("%1 and %2 more").arg(names.join(QLatin1String(", "))).arg(more);
}

QString HistoryKeys() {
    return QKeySequence(Qt::CTRL | Qt::Key_H).toString(QKeySequence::NativeText);
}

// What to say about the companion's files after a write: which differ from the buttons, and that they win;
// where the copy of an interrupted one is; and in which the write replaced another program's changes.
QStringList CompanionProblems(const KorvaneResults &results) {
    QStringList problems;
    for (std::size_t row = 0; row < results.size(); ++row) {
        const KorvaneFileState state = results[row].state;
        const std::string path = FindKorvaneFileForApp(kKorvaneApps[row].folder);
        std::string kept;
        const bool isInUse = state == KorvaneFileState::InUse;
        const bool isTooLong = state == KorvaneFileState::TooLong;
        if (isInUse || isTooLong || state == KorvaneFileState::NotWritten) {
            const QString why = isInUse     ? DrevixPane::tr("another program kept writing it")
                                : isTooLong ? DrevixPane::tr("it is too long")
                                            : StatusSentence(results[row].status);
            problems +=
                DrevixPane::tr("The companion dial's file %1 could not be written: %2. Its entries hold "
                               "again for buttons I, II and III when it is next read.")
                    .arg(TextOf(path), why);
            kept = FindKeptCopy(path);
        } else if (state == KorvaneFileState::Replaced) {
            problems +=
                DrevixPane::tr("Your settings for buttons I, II and III replaced what another program "
                               "had meanwhile changed in the companion dial's file %1.")
                    .arg(TextOf(path));
            kept = results[row].kept;
        }
        if (!kept.empty()) {
            problems += DrevixPane::tr("What it held is kept as %1.").arg(TextOf(kept));
        }
    }
    return problems;
}

QStringList ConflictTexts(const std::vector<RecordConflict> &conflicts) {
    QStringList texts;
    for (const ConflictText &row : kConflictTexts) {
        QStringList names;
        for (const RecordConflict &conflict : conflicts) {
            if (conflict.ours.has_value() == row.isOurs && conflict.theirs.has_value() == row.isTheirs) {
                names += NameOf(conflict);
            }
        }
        if (!names.isEmpty()) {
            texts += DrevixPane::tr(row.text).arg(Listed(names));
        }
    }
    return texts;
}

} // namespace

void DrevixPane::BuildSaveControls() {
    connect(uiPaneButtonApply, &QPushButton::clicked, this, &DrevixPane::actPaneButtonApply);
    connect(uiPaneButtonSave, &QPushButton::clicked, this, &DrevixPane::actPaneButtonApply);
    const QKeySequence saveKeys(QKeySequence::Save);
    connect(new QShortcut(saveKeys, fMainView), &QShortcut::activated, this, [this] {
        if (uiPaneButtonApply->isEnabled() || uiPaneButtonSave->isVisible()) {
            actPaneButtonApply();
        }
    });
    for (QPushButton *button : {uiPaneButtonApply, uiPaneButtonSave}) {
        button->setToolTip(
            QStringLiteral("%1 (%2)").arg(button->toolTip(), saveKeys.toString(QKeySequence::NativeText)));
    }
    connect(&fDeviceCheckTimer, &QTimer::timeout, this, &DrevixPane::LookForOutsideChanges);
    fRetryTimer.setInterval(kRetryInterval);
    fRestTimer.setInterval(kRest);
    fRestTimer.setObjectName(QStringLiteral("fRestTimer"));
    for (QTimer *timer : {&fRetryTimer, &fRestTimer}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this,
                [this] { std::ignore = SaveEverything({}); }); // reported there
    }
}

void DrevixPane::actPaneButtonApply() {
    fIsConflictShown = false; // it was seen, and what is here is kept
    fConflicts.clear();
    ShowConflict();
    std::ignore = SaveEverything({}); // reported there; the base keeps the edits for the next save
}

// Whether the file now has everything from this program. The helper may not be running, so the status of
// notifying it does not count.
bool DrevixPane::SaveEverything(std::chrono::milliseconds wait) {
    fRestTimer.stop();
    fRetryTimer.stop();
    KeepEdits();
    fUndoSteps.EndJoining();
    std::ignore = SaveBaseToFile(wait);
    UpdateRevertApplyButtons();
    return fDocument.IsSaved() && !IsEdited();
}

// The document does the saving, which also takes in what other programs have saved.
OSErr DrevixPane::SaveBaseToFile(std::chrono::milliseconds wait) {
    const RecordTrace edited = TraceEdited();
    const int unsaved = fDocument.CountUnsaved();
    const SaveResult result = fDocument.Save(wait);
    fDrevixBase = fDocument.Base();
    fSaveStatus = fDocument.IsSaved() ? noErr : result.status;
    if (fSaveStatus == fBsyErr && fIsSelected) {
        fRetryTimer.start();
    }
    if (result.outside.cameIn) {
        ShowTraced(edited);
        DropStaleSteps();
    } else if (fDocument.CountUnsaved() != unsaved) {
        ShowTargetTitles();
    }
    const QStringList problems = SaveProblems(result);
    const QString toldBefore =
        std::exchange(fSaveProblem, (problems + SaveConflicts(result)).join(QLatin1Char(' ')));
    const bool isTriedAgain = result.status == fBsyErr && fSaveProblem == toldBefore;
    if (!isTriedAgain && !(fSaveProblem.isEmpty() && fIsConflictShown)) {
        TellOfSaving(fSaveProblem);
        ShowProblem(result.status == noErr ? problems.join(QLatin1Char(' ')) : QString());
    }
    AskAbout(result.outside.conflicts);
    const bool isCompanionTold =
        result.status == noErr && !CompanionProblems(fDocument.Companion()).isEmpty();
    fIsConflictShown = fIsConflictShown || isCompanionTold;
    return result.status;
}

QStringList DrevixPane::SaveProblems(const SaveResult &result) const {
    QStringList problems;
    if (result.status == fBsyErr) {
        problems += fIsSelected ? tr("Another program is saving; your changes will be saved after it.")
                                : tr("Not saved: another program is saving.");
    } else if (result.keptAside != noErr) {
        problems += tr("Not saved: couldn't keep a copy of the damaged settings file: %1.")
                        .arg(StatusSentence(result.keptAside));
    } else if (result.status != noErr && fDocument.IsReadOnly()) {
        problems += tr("Not saved: the settings file couldn't be read.");
    } else if (result.status != noErr) {
        problems += tr("Not saved: %1.").arg(StatusSentence(result.status));
    } else if (result.replacedDamaged) {
        problems += tr("The settings file was damaged. It was kept as %1, and a new one was written.")
                        .arg(TextOf(kDrevixPrefsName) + QLatin1String(kRefusedSuffix));
    }
    if ((result.status == noErr || result.wasTried) && fDocument.Owner() == Ownership::UsersOwn) {
        problems += CompanionProblems(fDocument.Companion());
    }
    if (result.status == noErr && result.history != noErr) {
        problems += tr("The settings are saved, but what was replaced could not be kept: %1.")
                        .arg(StatusSentence(result.history));
    }
    return problems;
}

QStringList DrevixPane::SaveConflicts(const SaveResult &result) {
    QStringList conflicts = ConflictTexts(result.outside.conflicts);
    if (!conflicts.isEmpty() && result.status == noErr && result.history == noErr) {
        conflicts += tr("What was replaced is under Earlier Settings (%1).").arg(HistoryKeys());
    }
    return conflicts;
}

void DrevixPane::TellCompanionProblems(const KorvaneResults &results) {
    if (const QStringList problems = CompanionProblems(results); !problems.isEmpty()) {
        Tell(problems.join(QLatin1Char(' ')));
    }
}

void DrevixPane::TellConflicts(const std::vector<RecordConflict> &conflicts) {
    if (!conflicts.empty()) {
        TellOfSaving(ConflictTexts(conflicts).join(QLatin1Char(' ')));
        AskAbout(conflicts);
    }
}

// Only the latest conflict about a record counts.
void DrevixPane::AskAbout(const std::vector<RecordConflict> &conflicts) {
    for (const RecordConflict &conflict : conflicts) {
        std::erase_if(fConflicts, [&](const RecordConflict &old) { return old.name == conflict.name; });
        fConflicts.push_back(conflict);
        fIsConflictShown = true;
    }
    if (!conflicts.empty()) {
        ShowConflict();
    }
}

void DrevixPane::SaveForLeaving() {
    if (!SaveEverything(kLongestWait)) {
        return; // the file may name items that the base names no more
    }
    fUndoSteps = {}; // their items are removed
    ShowUndoButtons();
    fDocument.CleanUpItems({}, [](QBaseHandle named) {
        std::ignore = CleanupDrevixItems(kDrevixItemsFolderName.data(), named); // the next one removes it
        ClearHalfMadeItems(kDrevixItemsFolderName.data());
    });
    fDrevixBase = fDocument.Base();
}

// An edit while the host is inactive comes after the save that going to the background made.
void DrevixPane::SaveSoonIfInactive() {
    if (fIsSelected && !fIsHostActive && IsEdited()) {
        fRestTimer.start();
    }
}

// Shown while Apply has nothing to apply but the base is not in the file: after New, Delete and Import, after
// another application was chosen, and after a failed save.
void DrevixPane::ShowSaveButton(SaveState state) {
    const bool isShown = OffersSave(state);
    if (!isShown && uiPaneButtonSave->hasFocus()) {
        ControlMenus()[static_cast<std::size_t>(uiPaneTabs->currentIndex())]->setFocus(Qt::OtherFocusReason);
    }
    uiPaneButtonSave->setText(state == SaveState::Failed ? tr("Retr&y") : tr("&Save Now"));
    uiPaneButtonSave->setVisible(isShown);
}

// The bar never relies on its tint alone: its text says the same, and is announced when it changes.
void DrevixPane::ShowSaveState(SaveState state, const QString &text) {
    const bool isFailed = state == SaveState::Failed;
    uiPaneSaveBar->SetTint(isFailed ? Tint::Failure : state == SaveState::Saved ? Tint::None : Tint::Unsaved);
    uiSaveIcon->setVisible(isFailed);
    if (isFailed && uiSaveIcon->pixmap().isNull()) {
        const int side = static_cast<int>(EmOf(fMainView->font()));
        uiSaveIcon->setPixmap(
            QIcon::fromTheme(QStringLiteral("dialog-error"),
                             fMainView->style()->standardIcon(QStyle::SP_MessageBoxCritical))
                .pixmap({side, side}, fMainView->devicePixelRatioF()));
    }
    QFont font = uiPaneTextDifferences->font();
    font.setWeight(state == SaveState::Saved ? QFont::Normal : QFont::DemiBold);
    uiPaneTextDifferences->setFont(font);
    uiPaneTextDifferences->SetShortText(isFailed                    ? fSaveProblem
                                        : state != SaveState::Saved ? tr("Unsaved")
                                                                    : QString());
    if (uiPaneTextDifferences->text() != text) {
        uiPaneTextDifferences->setText(text);
        uiPaneSaveBar->setAccessibleName(text);
        QAccessibleEvent alert(uiPaneSaveBar, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
    uiPaneButtonApply->setDefault(CanApply(state));
    uiPaneButtonSave->setDefault(isFailed);
    FitSaveBar();
}

// If the state needs the room, the device's texts give up theirs, the last first.
void DrevixPane::FitSaveBar() {
    const std::array<QWidget *, 4> device = {uiInfoTextNone, uiInfoTextCount, uiInfoTextFirmwareVers,
                                             uiInfoTextSerialNumber};
    const int spacing = saveBarLayout->spacing();
    int needed = saveBarLayout->contentsMargins().left() + saveBarLayout->contentsMargins().right() +
                 uiInfoDot->sizeHint().width();
    for (const QWidget *widget : uiPaneSaveBar->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        needed += widget == uiInfoTextStatus || widget->isHidden() ? 0 : widget->sizeHint().width() + spacing;
    }
    for (QWidget *widget : device) {
        const bool isTold = widget == uiInfoTextNone ? !HasDevice() : HasDevice();
        needed += isTold ? widget->sizeHint().width() + spacing : 0;
        widget->setVisible(isTold && needed <= uiPaneSaveBar->width());
    }
}

QString DrevixPane::SaveStateText(SaveState state, int unsaved) const {
    switch (state) {
    case SaveState::Saved:
        return tr("All changes saved");
    case SaveState::Failed:
        return unsaved == 0 || fSaveStatus == fBsyErr
                   ? fSaveProblem
                   : tr("%1 Your changes are kept here.").arg(fSaveProblem);
    case SaveState::Edited:
    case SaveState::Kept:
        break;
    }
    if (unsaved > 1) {
        return tr("Unsaved changes in %1 applications").arg(unsaved);
    }
    const QString name = UnsavedName();
    return name.isEmpty() ? tr("Unsaved changes") : tr("Unsaved changes in %1").arg(name);
}

// The name of the only record that differs from the file; empty if that was deleted.
QString DrevixPane::UnsavedName() const {
    if (IsEdited() || fDocument.IsUnsaved(fDrevixPrefs)) {
        return NameOf(fDrevixPrefs);
    }
    for (RecordNumber i = 0; i < QBaseCountRecords(fDrevixBase); ++i) {
        const AppPrefs *prefs = GetAppPrefs(fDrevixBase, i);
        if (prefs != nullptr && fDocument.IsUnsaved(*prefs)) {
            return NameOf(*prefs);
        }
    }
    return {};
}

// Takes in what another program has saved at once, and asks the user where both sides changed a record. An
// edit that waits for Apply waits for the merge in its save, because Apply and Revert would be dimmed.
// Nothing changes under an open menu, a question or a field that records keys.
void DrevixPane::LookForOutsideChanges() {
    const bool isBusy = QApplication::activePopupWidget() != nullptr ||
                        QApplication::activeModalWidget() != nullptr || uiSettingsFieldKeystroke->IsWaiting();
    if (!isBusy && !IsEdited()) {
        TakeOutsideChanges();
    }
}

bool DrevixPane::mayClose() {
    if (!fIsSelected) {
        return true;
    }
    fIsConflictShown = false;
    willUnselect();
    while (CountUnsaved() > 0) {
        UnsavedPanel panel(fSaveProblem, fMainView->window());
        switch (panel.Ask()) {
        case UnsavedPanel::Answer::Retry:
            SaveForLeaving();
            break;
        case UnsavedPanel::Answer::ExportAll:
            if (ExportBeforeClosing()) {
                return true;
            }
            break;
        case UnsavedPanel::Answer::Discard:
            return true;
        case UnsavedPanel::Answer::Cancel:
            didSelect();
            return false;
        }
    }
    if (fIsConflictShown) { // nobody would read it in a window that is gone
        Tell(fSaveProblem + QLatin1Char(' ') +
             tr("Your settings are saved. Close the window again to leave."));
        didSelect();
        return false;
    }
    return true;
}

bool DrevixPane::ExportBeforeClosing() {
    ExportPanel panel(fMainView->window());
    panel.InsistOnAll();
    return panel.exec() == QDialog::Accepted && ExportCurrentAppPrefs(panel.Path(), true) == noErr;
}

} // namespace drevix
