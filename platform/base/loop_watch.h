// Watches a descriptor and a timer in the program's event loop.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace drevix {

// The program's event loop as watches use it: Qt's in the panel, sd-event's in the helper. Main thread only.
class EventLoop {
  public:
    EventLoop() = default;
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;
    virtual ~EventLoop() = default;

    // One watch's registration with the loop, until destruction, which may happen during the callback.
    class Place {
      public:
        Place() = default;
        Place(const Place &) = delete;
        Place &operator=(const Place &) = delete;
        virtual ~Place() = default;
        // As LoopWatch::Watch.
        virtual void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait) = 0;
    };
    [[nodiscard]] virtual std::unique_ptr<Place> MakePlace(std::function<void()> function) = 0;
    [[nodiscard]] virtual bool IsRunning() const = 0;
};

// Sets the loop that watches use from their next Watch call; null: none. Not owned.
void SetEventLoop(EventLoop *loop);

// Calls a function from the program's event loop when a descriptor is ready, hung up or failed (repeatedly,
// as long as that is so), or when a time has come. The function may destroy the watch when called for the
// descriptor. The descriptor belongs to the caller and must outlive the watch. Without an event loop nothing
// is ever called. Main thread only.
class LoopWatch {
  public:
    explicit LoopWatch(std::function<void()> function);

    // Watches this descriptor (-1: none) for POLLIN and POLLOUT in `events`, and calls once after `wait`
    // unless changed before. Replaces the previous watch.
    void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait);

    // Whether an event loop is running, so that blocking would be noticed.
    [[nodiscard]] static bool IsInLoop();

  private:
    std::function<void()> fFunction;
    std::unique_ptr<EventLoop::Place> fPlace;
};

} // namespace drevix
