#include "platform/loop_watch.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <poll.h>
#include <utility>

namespace drevix {

struct LoopWatch::Parts {
    // Within the loop it may be a notifier's own signal that has the descriptor changed; outside it nobody
    // would come to delete it later.
    struct Later {
        void operator()(QObject *object) const {
            if (IsInLoop()) {
                object->deleteLater();
            } else {
                delete object;
            }
        }
    };
    template <typename T>
    using Owner = std::unique_ptr<T, Later>;

    Parts() = default;
    Parts(const Parts &) = delete;
    Parts &operator=(const Parts &) = delete;
    // What goes later must not look at the descriptor, which is closed soon, nor call into what is gone.
    ~Parts() {
        Disable(read.get());
        Disable(write.get());
        if (timer) {
            timer->stop();
        }
    }

    int descriptor = -1;
    Owner<QSocketNotifier> read;
    Owner<QSocketNotifier> write;
    Owner<QTimer> timer;

    static void Disable(QSocketNotifier *notifier) {
        if (notifier != nullptr) {
            notifier->setEnabled(false);
        }
    }

    void SetDescriptor(int newDescriptor, const std::function<void()> &function) {
        if (newDescriptor == descriptor) {
            return;
        }
        Disable(read.get());
        Disable(write.get());
        read.reset();
        write.reset();
        descriptor = newDescriptor;
        if (descriptor >= 0) {
            read.reset(new QSocketNotifier(descriptor, QSocketNotifier::Read));
            write.reset(new QSocketNotifier(descriptor, QSocketNotifier::Write));
            for (const QSocketNotifier *notifier : {read.get(), write.get()}) {
                QObject::connect(notifier, &QSocketNotifier::activated, function);
            }
        }
    }
};

LoopWatch::LoopWatch(std::function<void()> function)
    : fFunction(std::move(function)), fParts(std::make_unique<Parts>()) {}

LoopWatch::~LoopWatch() = default;

void LoopWatch::Watch(int descriptor, short events, std::optional<std::chrono::milliseconds> wait) {
    if (QCoreApplication::instance() == nullptr) {
        return;
    }
    if (!fParts->timer) {
        fParts->timer.reset(new QTimer);
        fParts->timer->setSingleShot(true);
        QObject::connect(fParts->timer.get(), &QTimer::timeout, [this] { fFunction(); });
    }
    fParts->SetDescriptor(descriptor, fFunction);
    if (descriptor >= 0) {
        fParts->read->setEnabled((events & POLLIN) != 0);
        fParts->write->setEnabled((events & POLLOUT) != 0);
    }
    if (wait) {
        fParts->timer->start(*wait);
    } else {
        fParts->timer->stop();
    }
}

bool LoopWatch::IsInLoop() {
    return QCoreApplication::instance() != nullptr && QThread::currentThread()->loopLevel() > 0;
}

} // namespace drevix
