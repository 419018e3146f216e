#include "platform/bus/sd_event_loop.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <systemd/sd-event.h>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr std::uint64_t kNever = ~std::uint64_t{0};

// sd-event uses epoll's event bits, which equal poll's.
class SdPlace : public EventLoop::Place {
  public:
    SdPlace(sd_event *event, std::function<void()> function)
        : fEvent(event), fFunction(std::move(function)) {}
    SdPlace(const SdPlace &) = delete;
    SdPlace &operator=(const SdPlace &) = delete;
    // The library keeps a source alive during its callback and does not call it again.
    ~SdPlace() override {
        sd_event_source_disable_unref(fSource);
        sd_event_source_disable_unref(fTimer);
    }

    void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait) override {
        SetDescriptor(descriptor, static_cast<std::uint32_t>(events & (POLLIN | POLLOUT)));
        SetTimer(wait);
    }

  private:
    void SetDescriptor(int descriptor, std::uint32_t events) {
        if (fSource != nullptr && descriptor == fDescriptor) {
            sd_event_source_set_io_events(fSource, events);
            return;
        }
        fSource = sd_event_source_disable_unref(fSource);
        fDescriptor = descriptor;
        if (descriptor >= 0) {
            // One that cannot be watched, as a regular file, has nothing to wait for.
            std::ignore = sd_event_add_io(fEvent, &fSource, descriptor, events, CallForDescriptor, this);
        }
    }

    void SetTimer(std::optional<std::chrono::milliseconds> wait) {
        if (!wait) {
            if (fTimer != nullptr) {
                sd_event_source_set_enabled(fTimer, SD_EVENT_OFF);
            }
            return;
        }
        const auto after =
            static_cast<std::uint64_t>(std::max<std::int64_t>(std::chrono::microseconds(*wait).count(), 0));
        if (fTimer == nullptr) {
            sd_event_add_time_relative(fEvent, &fTimer, CLOCK_MONOTONIC, after, 1, CallForTime, this);
        } else if (sd_event_source_set_time_relative(fTimer, after) >= 0) {
            sd_event_source_set_enabled(fTimer, SD_EVENT_ONESHOT);
        }
    }

    // Copy first: the function may destroy its place.
    static int CallForDescriptor(sd_event_source * /*source*/, int /*descriptor*/, std::uint32_t /*events*/,
                                 void *place) {
        const std::function<void()> function = static_cast<SdPlace *>(place)->fFunction;
        function();
        return 0;
    }
    static int CallForTime(sd_event_source * /*source*/, std::uint64_t /*time*/, void *place) {
        const std::function<void()> function = static_cast<SdPlace *>(place)->fFunction;
        function();
        return 0;
    }

    sd_event *fEvent;
    std::function<void()> fFunction;
    sd_event_source *fSource = nullptr;
    sd_event_source *fTimer = nullptr;
    int fDescriptor = -1;
};

} // namespace

SdEventLoop::SdEventLoop() {
    if (sd_event_new(&fEvent) < 0) {
        fEvent = nullptr;
        return;
    }
    SetEventLoop(this);
}

SdEventLoop::~SdEventLoop() {
    if (fEvent != nullptr) {
        SetEventLoop(nullptr);
        sd_event_unref(fEvent);
    }
}

bool SdEventLoop::Run() {
    fIsRunning = true;
    int result = 0;
    for (fEnds = false; !fEnds && (result >= 0 || result == -EINTR);) {
        result = sd_event_run(fEvent, kNever);
    }
    fIsRunning = false;
    return fEnds;
}

void SdEventLoop::RunOnce(std::optional<std::chrono::microseconds> wait) {
    const std::uint64_t longest =
        wait ? static_cast<std::uint64_t>(std::max<std::int64_t>(wait->count(), 0)) : kNever;
    fIsRunning = true;
    // A failed wait loses nothing: what is ready stays ready.
    static_cast<void>(sd_event_run(fEvent, longest));
    fIsRunning = false;
}

void SdEventLoop::End() {
    fEnds = true;
}

std::unique_ptr<EventLoop::Place> SdEventLoop::MakePlace(std::function<void()> function) {
    return std::make_unique<SdPlace>(fEvent, std::move(function));
}

} // namespace drevix
