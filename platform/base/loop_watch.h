// A place in the program's event loop for what has a descriptor and times of its own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace drevix {

// What a program's event loop does for watches: Qt's in the panel, sd-event's in the helper. Main thread only.
class EventLoop {
  public:
    EventLoop() = default;
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;
    virtual ~EventLoop() = default;

    // One watch's part of the loop; ends with its destruction, which may happen within the call.
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

// Sets the loop that watches use from their next Watch on; null for none. It stays the caller's.
void SetEventLoop(EventLoop *loop);

// Calls a function from the program's event loop when a descriptor is ready, its peer has hung up or it
// failed, again and again as long as that is so, or when a time has come. The function may destroy the watch
// when it is called for the descriptor. The descriptor stays the caller's, and must outlive the watch.
// In a program without an event loop nothing is ever called. Main thread only.
class LoopWatch {
  public:
    explicit LoopWatch(std::function<void()> function);

    // From now on watches this descriptor (-1 for none) for POLLIN and POLLOUT in `events`, and calls once
    // after `wait` unless it is changed before.
    void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait);

    // Whether an event loop is running, so that waiting would be felt.
    [[nodiscard]] static bool IsInLoop();

  private:
    std::function<void()> fFunction;
    std::unique_ptr<EventLoop::Place> fPlace;
};

} // namespace drevix
