// What happens outside the window: the device in use, and the keyboard layout.
#include "pane/drevix_pane.h"

#include "keyboard/qt/layout_watch.h"
#include "pane/live_view.h"

#include <QApplication>

namespace drevix {

void DrevixPane::BuildLiveView() {
    fLiveView = new LiveView(uiSettingsTabsImages, fMainView);
    connect(fLiveView, &LiveView::touched, this, &DrevixPane::actControlTouched);
    connect(fLiveView, &LiveView::told, this, [this](const QString &line) { TellBeside(fDeviceLine, line); });
    connect(&fDeviceCheckTimer, &QTimer::timeout, fLiveView, &LiveView::Look);
    fLayoutWatch = new LayoutWatch(fMainView);
    connect(fLayoutWatch, &LayoutWatch::switched, this, &DrevixPane::LayoutSwitched);
}

bool DrevixPane::showPressed(const QString &key) {
    const ControlSlot *control = FindControlSlot(key.toStdString());
    if (control != nullptr) {
        uiSettingsTabsImages->setPressed(PictureIndexOf(control->slot), true);
    }
    return control != nullptr;
}

// Nothing changes under an open menu, a question or a field that records keys.
void DrevixPane::actControlTouched(SlotIndex slot) {
    if (QApplication::activePopupWidget() == nullptr && QApplication::activeModalWidget() == nullptr &&
        !OverrideKeysIsActive()) {
        SelectControl(slot);
    }
}

// Never replaces a message about the settings, which matters more and is shown only once. `told` is the last
// message of this kind.
void DrevixPane::TellBeside(QString &told, const QString &line) {
    if ((fTold.isEmpty() || fTold == told) && line != fTold) {
        told = line;
        Tell(line);
    }
}

// Uses the factory settings for the current layout.
void DrevixPane::UseLayout() {
    fFactory = FactoryFolder(fPrefPaneBundle.resources);
    fDocument.UseFactory(fFactory);
}

// A compositor has only now reported the current layout.
void DrevixPane::LayoutRebuilt() {
    const FSRef before = fFactory;
    UseLayout();
    if (fFactory.path != before.path && CountUnsaved() == 0) {
        actPaneButtonRevert();
    } else {
        GetUIFromPrefs();
    }
}

// Keystrokes are stored as key positions, and the characters on them were looked up only once.
void DrevixPane::LayoutSwitched(bool isOther) {
    TellBeside(fLayoutLine, isOther ? tr("The keyboard layout was switched. Close the settings and open them "
                                         "again to see the keys of "
                                         "the new one.")
                                    : QString());
}

} // namespace drevix
