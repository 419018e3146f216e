// Finding an action for the edited control, and the overview sheets.
#include "pane/drevix_pane.h"

#include "pane/editor_tables.h"
#include "pane/find_panel.h"
#include "pane/overview_panel.h"
#include "pane/pane_text.h"
#include "settings/prefs_list.h"

#include <QShortcut>

namespace drevix {

void DrevixPane::BuildShortcuts() {
    const auto add = [this](QKeyCombination keys, void (DrevixPane::*act)()) {
        connect(new QShortcut(keys, fMainView), &QShortcut::activated, this, act);
    };
    add(Qt::CTRL | Qt::Key_K, &DrevixPane::actFindAction);
    add(Qt::CTRL | Qt::Key_P, &DrevixPane::actOverview);
}

// Made on first use.
void DrevixPane::actFindAction() {
    if (fDrevixActionIndex < 0) {
        return;
    }
    if (fFindPanel == nullptr) {
        fFindPanel = new FindPanel(fMainView);
        connect(fFindPanel, &FindPanel::chosen, this, &DrevixPane::TakeFound);
        connect(fFindPanel, &FindPanel::keystrokeChosen, this, &DrevixPane::TakeTyped);
    }
    fFindPanel->Open(ControlTitle(fDrevixActionIndex), [this](const SearchEntry &entry) {
        return RefusalText(CheckAction(fDrevixPrefs, fDrevixActionIndex, entry.command), entry.command);
    });
}

void DrevixPane::TakeFound(const SearchEntry &entry) {
    const OneStep step(*this);
    actSettingsMenuAction(entry.position);
    if (entry.menu != nullptr) {
        actSettingsMenuGroup(*entry.menu, entry.menuPosition);
    }
}

void DrevixPane::TakeTyped(const TypedKeystroke &keystroke) {
    const OneStep step(*this);
    actSettingsMenuAction(static_cast<int>(ActionMenuEntry::Keystroke));
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->keyCode = keystroke.keyCode;
        slot->modifiers = keystroke.modifiers;
        GetUIFromPrefs();
    }
}

// Why the edited control cannot have an action; empty if it can.
QString DrevixPane::RefusalText(ActionRefusal refusal, ActionCommand command) const {
    switch (refusal) {
    case ActionRefusal::None:
        return {};
    case ActionRefusal::NotOnThisControl:
        return command == kActionToolMenu ? tr("only on buttons I, II and III")
                                          : tr("not on %1").arg(ControlTitle(fDrevixActionIndex));
    case ActionRefusal::NotInGlobalRecord:
    case ActionRefusal::NotInThisRecord:
        return tr("not in %1").arg(ShownName(fDrevixPrefs));
    case ActionRefusal::UnknownCommand:
    case ActionRefusal::NoControl:
        break;
    }
    return tr("unknown action");
}

void DrevixPane::actOverview() {
    OverviewPanel panel(
        ShownName(fDrevixPrefs), [this](bool ofAll) { return MakeSheets(ofAll); }, fMainView->window());
    panel.exec();
}

// Of the working copy, with its unsaved edits; and of the other records as they are here.
std::vector<SheetContents> DrevixPane::MakeSheets(bool ofAll) const {
    std::vector<SheetContents> sheets;
    if (!ofAll) {
        sheets.push_back(SheetOf(fDrevixPrefs, fDefaultAppPrefs, fOtherFamilies));
        return sheets;
    }
    const RecordNumber count = CountListedPrefs(fDrevixBase);
    sheets.reserve(static_cast<std::size_t>(count));
    for (RecordNumber i = 0; i < count; ++i) {
        const AppPrefs *stored = i == fDrevixPrefsIndex ? &fDrevixPrefs : GetAppPrefs(fDrevixBase, i);
        if (stored != nullptr) {
            AppPrefs factory = gDefaultGlobalPrefs;
            std::ignore = drevix::LoadDefaultPrefs(fFactory, *stored, &factory); // none is bold
            sheets.push_back(SheetOf(*stored, factory, {fPrefPaneBundle.resources, *stored}));
        }
    }
    return sheets;
}

SheetContents DrevixPane::SheetOf(const AppPrefs &prefs, const AppPrefs &factory,
                                  const OtherFamilies &others) const {
    SheetContents sheet{ShownName(prefs), {}, {}};
    for (std::size_t i = 0; i < kPictureSlots.size(); ++i) {
        sheet.controls[i] = ControlTextOf(kPictureSlots[i], prefs, factory, others);
    }
    const DevicePrefs &device = prefs.device[0];
    const auto percent = [](int value) { return tr("%1 %").arg(value); };
    sheet.values +=
        device.useSeparateNavSens == 0
            ? tr("Ring: sensitivity %1, speed %2, same for all directions")
                  .arg(percent(device.navSensitivity), percent(device.navSpeed))
            : tr("Ring: sensitivity %1, %2, %3, speed %4, %5, %6 (left and right, up and down, turning)")
                  .arg(percent(device.navSensitivityX), percent(device.navSensitivityY),
                       percent(device.navSensitivityZ), percent(device.navSpeedX), percent(device.navSpeedY),
                       percent(device.navSpeedZ));
    sheet.values += (device.click != 0 ? tr("Tuner: sensitivity %1, click sound on")
                                       : tr("Tuner: sensitivity %1, click sound off"))
                        .arg(percent(device.toolSensitivity));
    if (prefs.active == 0) {
        sheet.values += tr("Off: the device does nothing in this application.");
    }
    return sheet;
}

} // namespace drevix
