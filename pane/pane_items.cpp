// The item that a control opens: choosing, dropping, showing and trying it.
#include "pane/drevix_pane.h"

#include "pane/file_panels.h"
#include "pane/item_field.h"
#include "pane/pane_text.h"
#include "pane/workspace.h"
#include "platform/base/status.h"
#include "platform/desktop/desktop_entries.h"
#include "util/items/items_folder.h"

#include <QFile>
#include <QFileInfo>

#include <tuple>

namespace drevix {
namespace {

QString PathText(const DrevixItem &item) {
    return QFile::decodeName(QByteArray::fromStdString(item.path));
}

// An item's name for people; an application's name comes from its desktop entry.
QString NameOfItem(const DrevixItem &item) {
    DesktopEntry entry;
    if (item.path.ends_with(".desktop") && ReadDesktopEntry(item.path, MessagesLocale(), &entry) == noErr) {
        return TextOf(entry.name);
    }
    const QString name = QFileInfo(PathText(item)).fileName();
    return name.isEmpty() ? PathText(item) : name; // the root has no name
}

} // namespace

void DrevixPane::BuildItemControls() {
    connect(uiSettingsButtonChooseItem, &QPushButton::clicked, this,
            &DrevixPane::actSettingsButtonChooseItem);
    connect(uiSettingsButtonOpenItem, &QPushButton::clicked, this, &DrevixPane::actSettingsButtonOpenItem);
    connect(uiSettingsFieldOpenItem, &ItemField::itemDropped, this, &DrevixPane::chooseItemDidEnd);
    connect(uiSettingsTabsImages, &DevicePicture::itemDropped, this, [this](int index, const QString &path) {
        SetOpenItem(kPictureSlots.at(static_cast<std::size_t>(index)), path);
    });
}

void DrevixPane::actSettingsButtonChooseItem() {
    ItemPanel panel(fMainView->window());
    if (panel.exec() == QDialog::Accepted) {
        chooseItemDidEnd(panel.Path());
    }
}

void DrevixPane::chooseItemDidEnd(const QString &path) {
    if (fDrevixActionIndex >= 0) {
        SetOpenItem(fDrevixActionIndex, path);
    }
}

// Makes the control open the item. If no alias file can be made, the control stays as it was.
void DrevixPane::SetOpenItem(SlotIndex slot, const QString &path) {
    Str31 name{};
    const OSErr status = MakeDrevixItem(QFile::encodeName(path).toStdString(), &name);
    Report(status, tr("Couldn't use this item"));
    if (status != noErr) {
        return;
    }
    ActionSlot &action = fDrevixPrefs.device[0].action[slot];
    if (action.command != kActionOpenItem) {
        ChooseAction(fDrevixPrefs, slot, kActionOpenItem);
    }
    action.data = name;
    SelectControl(slot);
    GetUIFromPrefs();
    if (fRestTimer.isActive()) {          // dropped from another program: there is nothing to wait for
        std::ignore = SaveEverything({}); // reported there
    }
}

// Tries what the control opens.
void DrevixPane::actSettingsButtonOpenItem() {
    if (const ActionSlot *slot = EditedSlot(); slot != nullptr) {
        const DrevixItem item = ResolveDrevixItem(slot->data);
        Tell(item.exists && OpenItem(PathText(item)) ? QString()
                                                     : tr("%1 could not be opened.").arg(NameOfItem(item)));
    }
}

void DrevixPane::ShowOpenItem(const ActionSlot &slot) {
    const bool isChosen = slot.data[0] != 0;
    const DrevixItem item = isChosen ? ResolveDrevixItem(slot.data) : DrevixItem{};
    uiSettingsFieldOpenItem->setText(item.path.empty() ? TextOf(slot.data) : NameOfItem(item));
    uiSettingsFieldOpenItem->setCursorPosition(0);
    ShowToolTip(uiSettingsFieldOpenItem, PathText(item));
    uiSettingsButtonOpenItem->setEnabled(item.exists);
    uiSettingsTextOpenItem->setText(!isChosen ? tr("Choose a file, folder or application, or drop one here.")
                                    : item.path.empty() ? tr("This item can't be found any more.")
                                    : !item.exists      ? tr("%1 no longer exists.").arg(PathText(item))
                                                        : PathText(item));
}

QString DrevixPane::OpenItemText(const ActionSlot &slot) {
    const DrevixItem item = ResolveDrevixItem(slot.data);
    const QString name = item.path.empty() ? TextOf(slot.data) : NameOfItem(item);
    return (item.exists ? tr("Open %1") : tr("Open %1 (missing)")).arg(name);
}

} // namespace drevix
