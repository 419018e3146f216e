// The device as it is used: what a touch does in the window.
#include "pane/drevix_pane.h"

#include "pane/live_view.h"

#include <QApplication>

namespace drevix {

void DrevixPane::BuildLiveView() {
    fLiveView = new LiveView(uiSettingsTabsImages, fMainView);
    connect(fLiveView, &LiveView::touched, this, &DrevixPane::actControlTouched);
    connect(fLiveView, &LiveView::told, this, &DrevixPane::TellOfDevice);
    connect(&fDeviceCheckTimer, &QTimer::timeout, fLiveView, &LiveView::Look);
}

bool DrevixPane::showPressed(const QString &key) {
    const ControlSlot *control = FindControlSlot(key.toStdString());
    if (control != nullptr) {
        uiSettingsTabsImages->setPressed(PictureIndexOf(control->slot), true);
    }
    return control != nullptr;
}

// Nothing changes under an open menu, a question or a field that takes keys.
void DrevixPane::actControlTouched(SlotIndex slot) {
    if (QApplication::activePopupWidget() == nullptr && QApplication::activeModalWidget() == nullptr &&
        !OverrideKeysIsActive()) {
        SelectControl(slot);
    }
}

// Never in the place of what was told of the settings, which matters more and is told but once.
void DrevixPane::TellOfDevice(const QString &line) {
    if ((fTold.isEmpty() || fTold == fDeviceLine) && line != fTold) {
        fDeviceLine = line;
        Tell(line);
    }
}

} // namespace drevix
