// The editor's handlers: each writes into the working copy and redraws all controls from it.
#include "pane/drevix_pane.h"

#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "pane/editor_tables.h"
#include "pane/pane_text.h"
#include "pane/ring_values.h"
#include "settings/prefs_list.h"

namespace drevix {

// Null if no control is selected.
ActionSlot *DrevixPane::EditedSlot() {
    return fDrevixActionIndex < 0 ? nullptr : &fDrevixPrefs.device[0].action[fDrevixActionIndex];
}

// Shows the page of a slot, and selects its menu item.
void DrevixPane::SelectControl(SlotIndex slot) {
    int page = 0;
    for (PopUpMenu *menu : ControlMenus()) {
        if (const int position = menu->findData(slot); position >= 0) {
            const QSignalBlocker quiet(uiPaneTabs); // drawn once, below
            menu->setCurrentIndex(position);
            uiPaneTabs->setCurrentIndex(page);
        }
        ++page;
    }
    GetUIFromPrefs();
}

void DrevixPane::actSettingsMenuControls() {
    GetUIFromPrefs();
}

void DrevixPane::actSettingsBoxClick() {
    fDrevixPrefs.device[0].click = uiSettingsBoxClickSound->isChecked() ? 1 : 0;
    GetUIFromPrefs();
}

void DrevixPane::actSettingsBoxAllAxis() {
    const std::uint8_t isSeparate = uiSettingsBoxAllAxis->isChecked() ? 0 : 1;
    fDrevixPrefs.device[0].useSeparateNavSens = isSeparate;
    fDrevixPrefs.device[0].useSeparateNavSpeed = isSeparate;
    GetUIFromPrefs();
}

void DrevixPane::actSettingsSliderNavSens(int value) {
    DevicePrefs &device = fDrevixPrefs.device[0];
    if (const RingFields fields = EditedRingFields(device, fDrevixActionIndex);
        fields.sensitivity != nullptr) {
        device.*fields.sensitivity = static_cast<std::uint8_t>(value);
    }
    GetUIFromPrefs();
}

void DrevixPane::actSettingsSliderNavSpeed(int value) {
    DevicePrefs &device = fDrevixPrefs.device[0];
    if (const RingFields fields = EditedRingFields(device, fDrevixActionIndex); fields.speed != nullptr) {
        device.*fields.speed = static_cast<std::uint8_t>(value);
    }
    GetUIFromPrefs();
}

void DrevixPane::actSettingsSliderToolSens(int value) {
    fDrevixPrefs.device[0].toolSensitivity = static_cast<std::uint8_t>(value);
    GetUIFromPrefs();
}

void DrevixPane::actSettingsMenuAction(int position) {
    if (fDrevixActionIndex >= 0) {
        ChooseAction(fDrevixPrefs, fDrevixActionIndex, CommandForActionMenu(position, fDrevixActionIndex));
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsMenuGroup(const GroupMenu &menu, int position) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->command = CommandForGroupMenu(menu, position);
        if (IsAppCommand(slot->command)) {
            UpdateOppositeAction(fDrevixPrefs, fDrevixActionIndex);
        }
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsMenuToolMenu(int position) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->crc = uiSettingsMenuToolMenu->itemData(position).toUInt();
        UpdateToolMenuAction(fDrevixPrefs, fDrevixActionIndex);
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsMenuKeyRepeat(int position) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        const int tag = uiSettingsMenuKeyRepeat->itemData(position).toInt();
        slot->delay = tag < 0 ? kDelayOfNegativeTag : static_cast<std::uint16_t>(tag);
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsMenuAutoRepeat(int position) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->delay = static_cast<std::uint16_t>(uiSettingsMenuAutoRepeat->itemData(position).toInt());
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsMenuExtraKeys(int position) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->keyCode = KeyMenuToKeycode(position);
        GetUIFromPrefs();
    }
}

void DrevixPane::GetKeyModifier(std::uint16_t mask, bool isOn) {
    if (ActionSlot *slot = EditedSlot(); slot != nullptr) {
        slot->modifiers = static_cast<std::uint16_t>(isOn ? slot->modifiers | mask : slot->modifiers & ~mask);
        GetUIFromPrefs();
    }
}

void DrevixPane::actSettingsButtonDefaults(ControlGroup group) {
    LoadDefaultPrefs();
    CopyGroupFromDefaultPrefs(fDrevixPrefs, fDefaultAppPrefs, group);
    GetUIFromPrefs();
}

// The menu entries that the companion lists for the application, each with the checksum of its title.
void DrevixPane::UpdateToolMenu() {
    while (uiSettingsMenuToolMenu->count() > 1) {
        uiSettingsMenuToolMenu->removeItem(1);
    }
    const auto folder = FindKorvaneName(fDrevixPrefs.application, fDrevixPrefs.appFileName.data());
    const auto hotKeys = folder ? LoadKorvaneFileForApp(*folder) : std::nullopt;
    if (hotKeys) {
        for (const KorvaneHotKey &hotKey : hotKeys->HotKeys) {
            const std::string title = hotKey.Text(KorvaneKey::Menu);
            uiSettingsMenuToolMenu->addItem(TextOf(title), KorvaneStringCRC(title));
        }
    }
    uiSettingsTextToolMenu->setText(uiSettingsMenuToolMenu->count() > 1
                                        ? QString()
                                        : tr("The companion has no menu for this application."));
}

// The first item is not a companion entry, whatever the checksum of its title.
int DrevixPane::FindInToolMenu(std::uint32_t crc) const {
    for (int i = 1; i < uiSettingsMenuToolMenu->count(); ++i) {
        if (uiSettingsMenuToolMenu->itemData(i).toUInt() == crc) {
            return i;
        }
    }
    return 0;
}

bool DrevixPane::showPage(int page) {
    if (page < 0 || page >= uiPaneTabs->count()) {
        return false;
    }
    uiPaneTabs->setCurrentIndex(page);
    return true;
}

bool DrevixPane::showControl(const QString &key) {
    const ControlSlot *control = FindControlSlot(key.toStdString());
    if (control == nullptr) {
        return false;
    }
    SelectControl(control->slot);
    return true;
}

} // namespace drevix
