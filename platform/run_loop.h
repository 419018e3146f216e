// The program's event loop, as far as code below the window needs it.
#pragma once

#include <functional>
#include <memory>

namespace drevix {

// While it lives, calls `ready` from the event loop of the thread that made it when the descriptor has bytes
// to read, its peer has hung up, or it failed; again and again as long as that is so. The callback may destroy
// the watch. The descriptor stays the caller's, and must outlive the watch. Without a running event loop
// nothing is ever called.
class DescriptorWatch {
  public:
    DescriptorWatch(int descriptor, std::function<void()> ready);
    DescriptorWatch(const DescriptorWatch &) = delete;
    DescriptorWatch &operator=(const DescriptorWatch &) = delete;
    ~DescriptorWatch();

  private:
    struct State;
    std::unique_ptr<State> fState;
};

} // namespace drevix
