#include "platform/run_loop.h"

#include <QCoreApplication>
#include <QSocketNotifier>

namespace drevix {

struct DescriptorWatch::State {
    QSocketNotifier *notifier = nullptr; // none in a program without an event loop
};

DescriptorWatch::DescriptorWatch(int descriptor, std::function<void()> ready)
    : fState(std::make_unique<State>()) {
    if (QCoreApplication::instance() == nullptr) {
        return;
    }
    fState->notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read);
    QObject::connect(fState->notifier, &QSocketNotifier::activated, fState->notifier,
                     [ready = std::move(ready)] { ready(); });
}

DescriptorWatch::~DescriptorWatch() {
    if (fState->notifier == nullptr) {
        return;
    }
    fState->notifier->setEnabled(false);
    // It may be the notifier that is calling, and its callback with it, so it lives until the loop turns. At
    // the end of the program no loop is left.
    if (QCoreApplication::instance() != nullptr) {
        fState->notifier->deleteLater();
    } else {
        delete fState->notifier;
    }
}

} // namespace drevix
