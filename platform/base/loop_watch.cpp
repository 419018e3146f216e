#include "platform/base/loop_watch.h"

#include <utility>

namespace drevix {
namespace {

EventLoop *gEventLoop = nullptr;

} // namespace

void SetEventLoop(EventLoop *loop) {
    gEventLoop = loop;
}

LoopWatch::LoopWatch(std::function<void()> function) : fFunction(std::move(function)) {}

void LoopWatch::Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait) {
    if (gEventLoop == nullptr) {
        return;
    }
    if (!fPlace) {
        fPlace = gEventLoop->MakePlace(fFunction);
    }
    fPlace->Watch(descriptor, events, wait);
}

bool LoopWatch::IsInLoop() {
    return gEventLoop != nullptr && gEventLoop->IsRunning();
}

} // namespace drevix
