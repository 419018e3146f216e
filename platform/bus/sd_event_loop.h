// The event loop of programs without a window: sd-event, which needs neither threads nor polling.
#pragma once

#include "platform/base/loop_watch.h"

struct sd_event;

namespace drevix {

class SdEventLoop : public EventLoop {
  public:
    // Makes this loop that of the program until its destruction. Check IsOpen.
    SdEventLoop();
    SdEventLoop(const SdEventLoop &) = delete;
    SdEventLoop &operator=(const SdEventLoop &) = delete;
    ~SdEventLoop() override;

    // False when the kernel had no descriptor left for the loop: nothing would be called.
    [[nodiscard]] bool IsOpen() const { return fEvent != nullptr; }

    // Serves watches until End is called by one. False when waiting failed.
    bool Run();
    // Serves what is ready, and waits at most that long for the first of it; for ever when no time is given.
    void RunOnce(std::optional<std::chrono::microseconds> wait);
    void End();

    // Places that the loop may not have (out of memory or of descriptors) are watched from the next Watch on.
    [[nodiscard]] std::unique_ptr<Place> MakePlace(std::function<void()> function) override;
    [[nodiscard]] bool IsRunning() const override { return fIsRunning; }

  private:
    sd_event *fEvent = nullptr;
    bool fIsRunning = false;
    bool fEnds = false;
};

} // namespace drevix
