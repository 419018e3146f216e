// Draws every control from the working copy. Changes no record, and does not disturb what the user is doing:
// a control that already shows the right value is left alone.
#include "pane/drevix_pane.h"

#include "pane/editor_tables.h"
#include "pane/pane_text.h"
#include "pane/ring_values.h"
#include "settings/prefs_list.h"

#include <QSignalBlocker>
#include <QStandardItemModel>

#include <algorithm>

namespace drevix {
namespace {

void EnableItem(const QComboBox *menu, int item, bool isEnabled) {
    qobject_cast<QStandardItemModel *>(menu->model())->item(item)->setEnabled(isEnabled);
}

QString PercentText(int value) {
    return DrevixPane::tr("%1 %").arg(value);
}

QString OnOffText(bool isOn) {
    return isOn ? DrevixPane::tr("on") : DrevixPane::tr("off");
}

void SetBold(QWidget *widget, bool isBold) {
    if (QFont font = widget->font(); font.bold() != isBold) {
        font.setBold(isBold);
        widget->setFont(font);
    }
}

// Marks a control whose value differs from the factory's.
void Explain(QWidget *widget, bool isChanged, const QString &factoryValue) {
    ShowToolTip(widget, isChanged ? DrevixPane::tr("Changed. Factory: %1").arg(factoryValue) : QString());
}

void ShowSlider(QSlider *slider, QLabel *text, int value, int factoryValue) {
    const QSignalBlocker quiet(slider);
    slider->setValue(value);
    text->setText(PercentText(value));
    SetBold(text, value != factoryValue);
    Explain(slider, value != factoryValue, PercentText(factoryValue));
    Explain(text, value != factoryValue, PercentText(factoryValue));
}

void ShowBox(QCheckBox *box, bool isOn, bool isOnByFactory) {
    box->setChecked(isOn);
    SetBold(box, isOn != isOnByFactory);
    Explain(box, isOn != isOnByFactory, OnOffText(isOnByFactory));
}

// "Ctrl + scroll up".
QString WithModifiers(const QString &modifiers, const QString &title) {
    return modifiers.isEmpty()
               ? title
               : DrevixPane::tr("%1 + %2").arg(modifiers, title.left(1).toLower() + title.mid(1));
}

QString AxisText(Axis axis) {
    switch (axis) {
    case Axis::X:
        return DrevixPane::tr("For left and right");
    case Axis::Y:
        return DrevixPane::tr("For up and down");
    case Axis::Z:
        return DrevixPane::tr("For turning");
    case Axis::None:
        break;
    }
    return {};
}

} // namespace

void DrevixPane::GetUIFromPrefs() {
    fDrevixActionIndex = SelectedSlot();
    if (const int index = PictureIndexOf(fDrevixActionIndex); index >= 0) {
        uiSettingsTabsImages->setCurrentIndex(index);
    }
    NoteEdit();
    EnableMenus();
    ShowDeviceValues();
    ShowControlActions();
    ShowDefaultsButton();
    ShowFactoryButton();
    ShowAction();
    ShowTargetTitle(fDrevixPrefsIndex);
    ShowHeader();
    UpdateRevertApplyButtons();
    ShowUndoButtons();
    SaveSoonIfInactive();
}

// The slot of the control that is selected on the page shown.
SlotIndex DrevixPane::SelectedSlot() const {
    const auto menus = ControlMenus();
    const int page = uiPaneTabs->currentIndex();
    if (page < 0 || page >= static_cast<int>(menus.size())) {
        return fDrevixActionIndex;
    }
    return static_cast<SlotIndex>(menus[static_cast<std::size_t>(page)]->currentData().toInt());
}

void DrevixPane::EnableMenus() {
    const auto enableCommand = [this](int tag, bool isEnabled) {
        EnableItem(uiSettingsMenuTarget, uiSettingsMenuTarget->count() - TargetItemFromEnd(tag), isEnabled);
    };
    enableCommand(kTagDelete, fDrevixPrefsIndex != 0 && fDrevixPrefs.factory == 0);
    enableCommand(kTagInstall, false); // there is no installer on this system

    uiSettingsMenuAction->setEnabled(fDrevixActionIndex >= 0);
    const auto enableAction = [this](ActionMenuEntry entry, bool isEnabled) {
        EnableItem(uiSettingsMenuAction, static_cast<int>(entry), isEnabled);
    };
    const bool hasAppCommands = HasAppCommands(fDrevixPrefs.application);
    enableAction(ActionMenuEntry::UseGlobal, fDrevixPrefsIndex != 0);
    enableAction(ActionMenuEntry::Application, hasAppCommands);
    enableAction(ActionMenuEntry::ToolMenu,
                 (hasAppCommands || fDrevixPrefs.application == kGlobalSignature) &&
                     IsToolMenuSlot(fDrevixActionIndex));
}

void DrevixPane::ShowDeviceValues() {
    const DevicePrefs &device = fDrevixPrefs.device[0];
    const DevicePrefs &factory = fDefaultAppPrefs.device[0];
    (fDrevixPrefs.active != 0 ? uiSettingsRadioActive : uiSettingsRadioDisabled)->setChecked(true);
    ShowRingSliders();
    ShowSlider(uiSettingsSliderToolSens, uiSettingsTextToolSens, device.toolSensitivity,
               factory.toolSensitivity);
    ShowBox(uiSettingsBoxClickSound, device.click != 0, factory.click != 0);
}

void DrevixPane::ShowRingSliders() {
    const DevicePrefs &device = fDrevixPrefs.device[0];
    const DevicePrefs &factory = fDefaultAppPrefs.device[0];
    ShowBox(uiSettingsBoxAllAxis, device.useSeparateNavSens == 0, factory.useSeparateNavSens == 0);
    const RingFields fields = EditedRingFields(device, fDrevixActionIndex);
    if (fields.sensitivity == nullptr) {
        return; // a control of another page is selected
    }
    ShowSlider(uiSettingsSliderNavSens, uiSettingsTextNavSens, device.*fields.sensitivity,
               factory.*fields.sensitivity);
    ShowSlider(uiSettingsSliderNavSpeed, uiSettingsTextNavSpeed, device.*fields.speed, factory.*fields.speed);
    uiSettingsTextAxis->setText(AxisText(EditedAxis(device, fDrevixActionIndex)));
}

ControlText DrevixPane::ControlTextOf(SlotIndex slot, const AppPrefs &prefs, const AppPrefs &factory,
                                      const OtherFamilies &others) const {
    const ActionSlot &action = prefs.device[0].action[slot];
    const ActionSlot &byFactory = factory.device[0].action[slot];
    const bool isChanged = !DoTheSame(action, byFactory) && !others.Do(action, slot);
    const QString note = isChanged ? tr("Changed. Factory: %1").arg(ActionText(byFactory)) : QString();
    return {ControlTitle(slot), ActionText(action), note, isChanged, action.command == kActionNone};
}

// Shows each control's action beside it, in bold if it is not the factory's.
void DrevixPane::ShowControlActions() {
    for (PopUpMenu *menu : ControlMenus()) {
        for (int i = 0; i < menu->count(); ++i) {
            const auto slot = static_cast<SlotIndex>(menu->itemData(i).toInt());
            const ControlText text = ControlTextOf(slot, fDrevixPrefs, fDefaultAppPrefs, fOtherFamilies);
            menu->SetSecondColumn(i, {text.action, text.isChanged});
            uiSettingsTabsImages->setControlText(PictureIndexOf(slot), text);
        }
    }
}

// The tool tip of the page's defaults button lists what the button restores, with the differences in bold.
void DrevixPane::ShowDefaultsButton() {
    const ControlSlot *control = FindControlSlot(fDrevixActionIndex);
    if (control == nullptr) {
        return;
    }
    QStringList lines = {tr("Back to factory settings:")};
    QStringList markedLines = lines;
    for (const ControlSlot &other : kControlSlots) {
        if (other.group == control->group) {
            const ActionSlot &factory = fDefaultAppPrefs.device[0].action[other.slot];
            const bool isChanged = !DoTheSame(fDrevixPrefs.device[0].action[other.slot], factory);
            lines += tr("%1: %2").arg(ControlTitle(other.slot), ActionText(factory));
            const QString marked = lines.back().toHtmlEscaped();
            markedLines += isChanged ? QStringLiteral("<b>%1</b>").arg(marked) : marked;
        }
    }
    const QStringList values = DefaultValueTexts(control->group);
    const std::array<QPushButton *, 3> buttons = {uiSettingsButtonNavDefaults, uiSettingsButtonToolDefaults,
                                                  uiSettingsButtonTriggerDefaults};
    QPushButton *button = buttons[static_cast<std::size_t>(control->group)];
    button->setToolTip((markedLines + values).join(QLatin1String("<br>")));
    button->setAccessibleDescription((lines + values).join(QLatin1Char('\n')));
}

// The link that restores a control's factory action; hidden if there is nothing to restore.
void DrevixPane::ShowFactoryButton() {
    const ActionSlot *slot = EditedSlot();
    const ActionSlot *factory =
        slot == nullptr ? nullptr : &fDefaultAppPrefs.device[0].action[fDrevixActionIndex];
    const bool isChanged = slot != nullptr && !DoTheSame(*slot, *factory);
    if (!isChanged && uiSettingsButtonFactory->hasFocus()) {
        uiSettingsMenuAction->setFocus(Qt::OtherFocusReason);
    }
    if (isChanged) {
        const QString title = tr("Back to Factory: %1").arg(ActionText(*factory));
        uiSettingsButtonFactory->setText(QString(title).replace(QLatin1Char('&'), QLatin1String("&&")));
        ShowToolTip(uiSettingsButtonFactory, title);
        uiSettingsButtonFactory->setAccessibleName(title);
    }
    uiSettingsButtonFactory->setVisible(isChanged);
}

// What a defaults button restores besides the actions.
QStringList DrevixPane::DefaultValueTexts(ControlGroup group) const {
    const DevicePrefs &factory = fDefaultAppPrefs.device[0];
    switch (group) {
    case ControlGroup::Ring:
        return {tr("Sensitivity: %1").arg(PercentText(factory.navSensitivity)),
                tr("Speed: %1").arg(PercentText(factory.navSpeed)),
                tr("Same for all directions: %1").arg(OnOffText(factory.useSeparateNavSens == 0))};
    case ControlGroup::Tuner:
        return {tr("Sensitivity: %1").arg(PercentText(factory.toolSensitivity)),
                tr("Click sound: %1").arg(OnOffText(factory.click != 0))};
    case ControlGroup::Buttons:
        break;
    }
    return {};
}

QString DrevixPane::ActionText(const ActionSlot &slot) const {
    const ActionInfo *action = FindAction(slot.command);
    if (action == nullptr) {
        return tr("Unknown action %1").arg(slot.command);
    }
    QString title = TranslatedText(action->title);
    switch (action->group) {
    case ActionGroup::ActionKeystroke:
        return slot.keyCode == kNoKeyCode ? tr("No keys yet") : KeyText(slot);
    case ActionGroup::ActionScroll:
        return WithModifiers(ModifierText(slot.modifiers), title);
    case ActionGroup::ActionOpenItem:
        return slot.data[0] == 0 ? title : OpenItemText(slot);
    case ActionGroup::ActionToolMenu: {
        const int entry = FindInToolMenu(slot.crc);
        return entry > 0 ? uiSettingsMenuToolMenu->itemText(entry) : title;
    }
    default:
        return title;
    }
}

void DrevixPane::ShowAction() {
    const ActionSlot *slot = EditedSlot();
    const ActionPlace place = ClassifyAction(slot == nullptr ? kActionNone : slot->command);
    uiSettingsTextControl->setText(ControlTitle(fDrevixActionIndex));
    uiSettingsButtonFind->setEnabled(slot != nullptr);
    uiSettingsMenuAction->setCurrentIndex(place.actionMenuPosition);
    uiSettingsTabsAction->setCurrentIndex(static_cast<int>(place.tab));
    if (slot == nullptr) {
        return;
    }
    if (place.menu != nullptr) {
        MenuOf(*place.menu)->setCurrentIndex(place.menuPosition);
    }
    switch (place.tab) {
    case DetailTab::Empty:
        uiSettingsTextEmpty->setText(PlainActionText(slot->command));
        break;
    case DetailTab::ToolMenu:
        uiSettingsMenuToolMenu->setCurrentIndex(FindInToolMenu(slot->crc));
        break;
    case DetailTab::OpenItem:
        ShowOpenItem(*slot);
        break;
    case DetailTab::Scroll:
        ShowScroll(*slot);
        break;
    case DetailTab::Keystroke:
        ShowKeystroke(*slot);
        break;
    default:
        break;
    }
}

// The description of an action that has no options.
QString DrevixPane::PlainActionText(ActionCommand command) const {
    switch (command) {
    case kActionNone:
        return tr("Nothing happens. Choose an action above.");
    case kActionUseGlobal:
        if (const AppPrefs *global = GetAppPrefs(fDrevixBase, 0); global != nullptr) {
            return tr("Global Settings: %1").arg(ActionText(global->device[0].action[fDrevixActionIndex]));
        }
        return {};
    case kActionModeSwitch:
        return tr("Changes what the ring does.");
    default:
        return {};
    }
}

void DrevixPane::ShowScroll(const ActionSlot &slot) {
    ShowModifiers(slot);
    const bool isTuner = IsTunerSlot(fDrevixActionIndex);
    ShowDelay(uiSettingsMenuAutoRepeat,
              isTuner ? kTunerAutoRepeatItem : uiSettingsMenuAutoRepeat->findData(slot.delay), slot.delay,
              !isTuner);
}

// Selects the item of a delay; shows the delay itself if no item has it.
void DrevixPane::ShowDelay(QComboBox *menu, int item, int delay, bool isEnabled) {
    menu->setPlaceholderText(tr("Every %1/60 of a second").arg(delay));
    menu->setCurrentIndex(item);
    menu->setEnabled(isEnabled);
}

void DrevixPane::ShowModifiers(const ActionSlot &slot) {
    for (const auto &[box, mask] : ModifierBoxes()) {
        box->setChecked((slot.modifiers & mask) != 0);
    }
}

} // namespace drevix
