#include "pane/live_view.h"

#include "helperlink/acted_texts.h"
#include "helperlink/driver_messages.h"
#include "pane/device_picture.h"
#include "pane/pane_text.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

namespace drevix {
namespace {

constexpr std::chrono::milliseconds kMoment{400}; // a step is over before an eye has found it
constexpr auto kNoFailures = std::to_array<std::string_view>({kPanelIsInFront, kIsSwitchedOff, kIsLocked});

// -1 for a control that the picture does not have: a newer helper may report one.
int IndexOfKey(const std::string &key) {
    const ControlSlot *control = FindControlSlot(key);
    return control == nullptr ? -1 : PictureIndexOf(control->slot);
}

// The ring's rest events follow every push and turn, and would replace them in the editor.
bool IsRest(SlotIndex slot) {
    const ControlSlot *control = FindControlSlot(slot);
    return control != nullptr && control->key.ends_with("Rest");
}

} // namespace

LiveView::LiveView(DevicePicture *picture, QObject *parent)
    : QObject(parent), fPicture(picture),
      fWatch(stringWithPascalString(kDrevixHelperName.data()),
             {[this](const std::string &control, bool isDown) { TakePressed(control, isDown); },
              [this](const std::string &control, const std::string &what, std::uint32_t /*times*/) {
                  TakeActed(control, what);
              },
              [this] { ForgetTouches(); }}) {
    fMoments.setSingleShot(true);
    connect(&fMoments, &QTimer::timeout, this, &LiveView::ShowLights);
}

void LiveView::Begin(bool isInFront) {
    fIsWatching = true;
    SetInFront(isInFront);
    Look();
}

void LiveView::SetInFront(bool isInFront) {
    if (fIsWatching) {
        fWatch.Watch(isInFront);
    }
}

void LiveView::End() {
    fWatch.Stop();
    fIsWatching = false;
    ForgetTouches();
}

void LiveView::Look() {
    if (fIsWatching) {
        fWatch.Look();
    }
}

void LiveView::TakePressed(const std::string &control, bool isDown) {
    const int index = IndexOfKey(control);
    if (!fIsWatching || index < 0) {
        return;
    }
    Light &light = fLights.at(static_cast<std::size_t>(index));
    if (isDown) {
        light.LightUp();
    }
    light.isDown = isDown;
    ShowLights();
}

void LiveView::TakeActed(const std::string &control, const std::string &what) {
    const int index = IndexOfKey(control);
    if (!fIsWatching || index < 0) {
        return;
    }
    fLights.at(static_cast<std::size_t>(index)).LightUp();
    ShowLights();
    std::string_view reason = what;
    if (!reason.starts_with(kNothingBecause)) {
        Q_EMIT told({});
        return;
    }
    reason.remove_prefix(kNothingBecause.size());
    if (reason == kPanelIsInFront) {
        Pick(index);
    }
    if (std::ranges::find(kNoFailures, reason) == kNoFailures.end()) {
        const QString name = ControlTitle(kPictureSlots.at(static_cast<std::size_t>(index)));
        Q_EMIT told(tr("%1: %2.").arg(name, TranslatedText(reason)));
    }
}

void LiveView::Light::LightUp() {
    isPicked = isPicked && IsLit();
    moment.setRemainingTime(kMoment);
}

// A control that stays lit, such as a turning dial, is picked once. Only the helper says whether the panel
// was in front: that is how it acted, so a touch either acts or is picked, never both and never neither.
void LiveView::Pick(int index) {
    const SlotIndex slot = kPictureSlots.at(static_cast<std::size_t>(index));
    if (!std::exchange(fLights.at(static_cast<std::size_t>(index)).isPicked, true) && !IsRest(slot)) {
        Q_EMIT touched(slot);
    }
}

void LiveView::ForgetTouches() {
    fLights.fill({});
    ShowLights();
}

void LiveView::ShowLights() {
    qint64 next = -1; // milliseconds
    for (int i = 0; i < static_cast<int>(fLights.size()); ++i) {
        const Light &light = fLights.at(static_cast<std::size_t>(i));
        const qint64 moment = light.moment.remainingTime();
        fPicture->setPressed(i, light.IsLit());
        if (moment > 0 && (next < 0 || moment < next)) {
            next = moment;
        }
    }
    if (next >= 0) {
        fMoments.start(static_cast<int>(next));
    } else {
        fMoments.stop();
    }
}

} // namespace drevix
