#include "pane/qt_event_loop.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <poll.h>
#include <utility>

namespace drevix {
namespace {

bool IsLoopRunning() {
    return QCoreApplication::instance() != nullptr && QThread::currentThread()->loopLevel() > 0;
}

class QtPlace : public EventLoop::Place {
  public:
    explicit QtPlace(std::function<void()> function) : fFunction(std::move(function)) {}
    QtPlace(const QtPlace &) = delete;
    QtPlace &operator=(const QtPlace &) = delete;
    // Objects deleted later must not look at the descriptor, which is closed soon, or call anything that is
    // gone.
    ~QtPlace() override {
        Disable(fRead.get());
        Disable(fWrite.get());
        if (fTimer) {
            fTimer->stop();
        }
    }

    void Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait) override {
        if (QCoreApplication::instance() == nullptr) {
            return;
        }
        if (!fTimer) {
            fTimer.reset(new QTimer);
            fTimer->setSingleShot(true);
            QObject::connect(fTimer.get(), &QTimer::timeout, [this] { fFunction(); });
        }
        SetDescriptor(descriptor);
        if (descriptor >= 0) {
            fRead->setEnabled((events & POLLIN) != 0);
            fWrite->setEnabled((events & POLLOUT) != 0);
        }
        if (wait) {
            fTimer->start(*wait);
        } else {
            fTimer->stop();
        }
    }

  private:
    // Inside the loop, a notifier's own signal may be changing the descriptor; outside it, nothing would
    // process a deferred deletion.
    struct Later {
        void operator()(QObject *object) const {
            if (IsLoopRunning()) {
                object->deleteLater();
            } else {
                delete object;
            }
        }
    };
    template <typename T>
    using Owner = std::unique_ptr<T, Later>;

    static void Disable(QSocketNotifier *notifier) {
        if (notifier != nullptr) {
            notifier->setEnabled(false);
        }
    }

    void SetDescriptor(int descriptor) {
        if (descriptor == fDescriptor) {
            return;
        }
        Disable(fRead.get());
        Disable(fWrite.get());
        fRead.reset();
        fWrite.reset();
        fDescriptor = descriptor;
        if (descriptor >= 0) {
            fRead.reset(new QSocketNotifier(descriptor, QSocketNotifier::Read));
            fWrite.reset(new QSocketNotifier(descriptor, QSocketNotifier::Write));
            for (const QSocketNotifier *notifier : {fRead.get(), fWrite.get()}) {
                QObject::connect(notifier, &QSocketNotifier::activated, fFunction);
            }
        }
    }

    std::function<void()> fFunction;
    int fDescriptor = -1;
    Owner<QSocketNotifier> fRead;
    Owner<QSocketNotifier> fWrite;
    Owner<QTimer> fTimer;
};

} // namespace

std::unique_ptr<EventLoop::Place> QtEventLoop::MakePlace(std::function<void()> function) {
    return std::make_unique<QtPlace>(std::move(function));
}

bool QtEventLoop::IsRunning() const {
    return IsLoopRunning();
}

void UseQtEventLoop() {
    static QtEventLoop loop;
    SetEventLoop(&loop);
}

} // namespace drevix
