// Qt's event loop for the watches of the folders below.
#pragma once

#include "platform/base/loop_watch.h"

namespace drevix {

// Needs an application object before a watch is set; without one nothing is called.
class QtEventLoop : public EventLoop {
  public:
    [[nodiscard]] std::unique_ptr<Place> MakePlace(std::function<void()> function) override;
    [[nodiscard]] bool IsRunning() const override;
};

// Makes Qt's loop that of the program, for good.
void UseQtEventLoop();

} // namespace drevix
