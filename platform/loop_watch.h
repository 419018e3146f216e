// A place in the program's event loop for what has a descriptor and times of its own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace drevix {

// Calls a function from the application's event loop when a descriptor is ready, its peer has hung up or it
// failed, again and again as long as that is so, or when a time has come. The function may destroy the watch
// when it is called for the descriptor. The descriptor stays the caller's, and must outlive the watch.
// Without an application object nothing is ever called. Main thread only.
class LoopWatch {
  public:
    explicit LoopWatch(std::function<void()> function);
    LoopWatch(const LoopWatch &) = delete;
    LoopWatch &operator=(const LoopWatch &) = delete;
    ~LoopWatch();

    // From now on watches this descriptor (-1 for none) for POLLIN and POLLOUT in `events`, and calls once
    // after `wait` unless it is changed before.
    void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait);

    // Whether an event loop is running, so that waiting would be felt.
    [[nodiscard]] static bool IsInLoop();

  private:
    struct Parts;
    std::function<void()> fFunction;
    std::unique_ptr<Parts> fParts;
};

} // namespace drevix
