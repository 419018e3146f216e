// The event loop of programs without a window: sd-event, which needs neither threads nor polling.
#pragma once

#include "platform/base/loop_watch.h"

struct sd_event;

namespace drevix {

class SdEventLoop : public EventLoop {
  public:
    // Makes this the program's loop until destruction. Check IsOpen.
    SdEventLoop();
    SdEventLoop(const SdEventLoop &) = delete;
    SdEventLoop &operator=(const SdEventLoop &) = delete;
    ~SdEventLoop() override;

    // False if the kernel had no descriptor for the loop: nothing would be called.
    [[nodiscard]] bool IsOpen() const { return fEvent != nullptr; }

    // Serves watches until one calls End. False if waiting failed.
    bool Run();
    // Serves what is ready, waiting at most that long for the first event; forever if no time is given.
    void RunOnce(std::optional<std::chrono::microseconds> wait);
    void End();

    // If the loop cannot have a place (out of memory or descriptors), the next Watch call tries again.
    [[nodiscard]] std::unique_ptr<Place> MakePlace(std::function<void()> function) override;
    [[nodiscard]] bool IsRunning() const override { return fIsRunning; }

  private:
    sd_event *fEvent = nullptr;
    bool fIsRunning = false;
    bool fEnds = false;
};

} // namespace drevix
