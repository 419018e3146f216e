// The strip of messages: what went wrong, what another program changed, a helper that is not running, and
// first steps for new users.
#include "pane/drevix_pane.h"

#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/workspace.h"
#include "platform/base/status.h"
#include "settings/prefs_list.h"

#include <QSettings>

namespace drevix {
namespace {

QString IntroductionKey() {
    return QStringLiteral("introduction/seen");
}

// As the list of applications calls it.
QString NameOfConflict(const RecordConflict &conflict) {
    return conflict.name.empty() ? QCoreApplication::translate("Controls", "Global Settings")
                                 : TextOf(conflict.name);
}

QString TitleOf(const RecordConflict &conflict) {
    const QString name = NameOfConflict(conflict);
    if (!conflict.theirs) {
        return DrevixPane::tr("Another program deleted %1").arg(name);
    }
    return conflict.ours ? DrevixPane::tr("Another program changed %1 too").arg(name)
                         : DrevixPane::tr("Another program changed %1, which you deleted").arg(name);
}

} // namespace

void DrevixPane::BuildStrip() {
    connect(uiPaneStrip, &MessageStrip::changed, this, &DrevixPane::PlaceBadges);
    for (std::size_t i = 0; i < fBadges.size(); ++i) {
        fBadges[i] = new StepBadge(static_cast<int>(i) + 1, fMainView);
        fBadges[i]->hide();
    }
}

void DrevixPane::ShowProblem(const QString &problem) {
    if (fMainView == nullptr) {
        return;
    }
    if (problem.isEmpty()) {
        uiPaneStrip->TakeBack(StripKind::Problem);
    } else {
        uiPaneStrip->Show(StripKind::Problem,
                          {.title = problem, .text = {}, .buttons = {}, .isClosable = true});
    }
}

// Without the helper the device does nothing, and the user would not know why.
void DrevixPane::ShowHelperState() {
    const bool canStart = !FindApplication(fPrefPaneBundle.resources.path, kHelperApplication).empty();
    if (!IsHelperMissing() || !canStart) {
        uiPaneStrip->TakeBack(StripKind::NoHelper);
        return;
    }
    uiPaneStrip->Show(StripKind::NoHelper,
                      {.title = tr("The device helper isn't running"),
                       .text = tr("The device does nothing until it runs. Your settings are safe."),
                       .buttons = {{tr("Start Helper"),
                                    [this] {
                                        fTicksWithoutHelper = 0;
                                        StartHelper();
                                        ShowHelperState();
                                        ShowDevices();
                                    }}},
                       .isClosable = false});
}

void DrevixPane::ShowIntroduction() {
    if (!fIsFirstRun || fIsDrawnOnly || QSettings().value(IntroductionKey()).toBool()) {
        return;
    }
    uiPaneStrip->Show(
        StripKind::Introduction,
        {.title = tr("Welcome to your Veltrana"),
         .text = {},
         .buttons = {{tr("Open Help"), [this] { actPaneButtonManual(); }},
                     {tr("Got It"), [this] { EndIntroduction(); }}},
         .isClosable = false,
         .steps = {tr("Pick an application, or stay with Global Settings."),
                   tr("Click a control in the picture."), tr("Choose what it does, then Apply.")}});
}

void DrevixPane::EndIntroduction() {
    QSettings().setValue(IntroductionKey(), true);
    uiPaneStrip->TakeBack(StripKind::Introduction);
}

// Places the introduction's numbers where its steps are done.
void DrevixPane::PlaceBadges() {
    if (fBadges[0] == nullptr) {
        return;
    }
    const bool isShown = uiPaneStrip->Shown() == StripKind::Introduction;
    const int unit = static_cast<int>(UnitOf(EmOf(fMainView->font())));
    const int side = fBadges[0]->width();
    const auto corner = [this](const QWidget *widget, const QPoint &at) {
        return widget->mapTo(fMainView.data(), at);
    };
    const bool hasSide = uiPaneSplitter->IsSideShown();
    const QWidget *targets = hasSide ? static_cast<QWidget *>(uiTargetSideBar) : uiSettingsMenuTarget;
    const QPoint targetPlace = hasSide ? QPoint(targets->width() - side - 2 * unit, 3 * side)
                                       : QPoint(targets->width() - 2 * side, (targets->height() - side) / 2);
    fBadges[0]->move(corner(targets, targetPlace));
    // Beside the callout that is short in every language.
    fBadges[1]->move(
        corner(uiSettingsTabsImages, {unit / 2, uiSettingsTabsImages->height() - side - unit / 2}));
    fBadges[2]->move(corner(uiSettingsGroupAction, {uiSettingsGroupAction->width() - side, 0}));
    for (StepBadge *badge : fBadges) {
        badge->setVisible(isShown);
        badge->raise();
    }
}

// One question at a time, the first that is unanswered.
void DrevixPane::ShowConflict() {
    if (fConflicts.empty()) {
        uiPaneStrip->TakeBack(StripKind::Conflict);
        return;
    }
    const RecordConflict &conflict = fConflicts.front();
    const QString text = fDocument.IsSaved()
                             ? tr("Your settings replaced the ones another program had saved.")
                             : tr("You have changes here that it doesn't know of. Which should be kept?");
    uiPaneStrip->Show(StripKind::Conflict, {.title = TitleOf(conflict),
                                            .text = text,
                                            .buttons = {{tr("Show Theirs"), [this] { actShowTheirs(); }},
                                                        {tr("Keep Mine"), [this] { actKeepMine(); }}},
                                            .isClosable = false});
}

// Their record replaces this one, as an edit: the next save saves it.
void DrevixPane::actShowTheirs() {
    if (fConflicts.empty()) {
        return;
    }
    KeepEdits();
    const RecordConflict conflict = fConflicts.front();
    const AppPrefs &either = conflict.theirs ? *conflict.theirs : *conflict.ours;
    const RecordNumber here = FindReplacedAppPrefs(fDrevixBase, either);
    if (conflict.theirs) {
        const RecordNumber number = StoreRecord(*conflict.theirs, here); // mine is one Undo away
        if (number == kNoRecord) {
            Report(memFullErr, tr("Couldn't keep the changes"));
            return;
        }
        ShowStored(number);
    } else if (here > 0 && RemoveRecord(here)) {
        ShowRecord(here - 1);
    }
    actKeepMine();
}

// The base already has it.
void DrevixPane::actKeepMine() {
    if (!fConflicts.empty()) {
        fConflicts.erase(fConflicts.begin());
    }
    fIsConflictShown = !fConflicts.empty();
    ShowConflict();
}

} // namespace drevix
