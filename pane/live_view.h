// Shows the device in use: a touched control lights up in the picture while it is down, or for a moment if it
// only moves by a step. While the panel is in front, the device does nothing else.
#pragma once

#include "platform/bus/device_watch.h"
#include "settings/app_prefs.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <array>
#include <string>

namespace drevix {

class DevicePicture;

class LiveView : public QObject {
    Q_OBJECT

  public:
    // Lights up the controls of a picture, which must outlive this. Does nothing before Begin.
    LiveView(DevicePicture *picture, QObject *parent);

    // Watches the helper's device, as soon as there is one, until End, which leaves nothing lit.
    void Begin(bool isInFront);
    void SetInFront(bool isInFront);
    void End();
    // Call once a second: the helper may have come or gone.
    void Look();

  Q_SIGNALS:
    // A control was touched, but has done nothing since the panel came to the front.
    void touched(int slot);
    // What a control could not do and why, for people; empty once a control works again.
    void told(const QString &line);

  private:
    void TakePressed(const std::string &control, bool isDown);
    void TakeActed(const std::string &control, const std::string &what);
    void Pick(int index);
    void ForgetTouches();
    void ShowLights();

    struct Light {
        bool isDown = false;
        bool isPicked = false; // since it lit up
        QDeadlineTimer moment{0};

        [[nodiscard]] bool IsLit() const { return isDown || !moment.hasExpired(); }
        void LightUp(); // for a moment at least
    };

    DevicePicture *fPicture;
    DeviceWatch fWatch;
    std::array<Light, kControlSlots.size()> fLights; // by the picture's index
    QTimer fMoments;                                 // until the next moment is over
    bool fIsWatching = false;
};

} // namespace drevix
