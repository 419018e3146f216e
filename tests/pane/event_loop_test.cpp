#include "pane/qt_event_loop.h"
#include "platform/bus/sd_event_loop.h"
#include "platform/files/owners.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <array>
#include <poll.h>

namespace drevix::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

int gWarnings = 0;

// A watch is called for its time and its descriptor, and may go within the call with the descriptor closed: each
// left a warning of Qt's loop once.
void ExpectServed(const std::function<void()> &turn) {
    int calls = 0;
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const SystemDescriptor writing(ends[1]);
    std::unique_ptr<LoopWatch> watch;
    watch = std::make_unique<LoopWatch>([&] {
        ++calls;
        if (calls == 1) {
            ASSERT_EQ(::write(ends[1], "x", 1), 1);
        } else {
            watch.reset();
            ::close(ends[0]);
        }
    });
    watch->Watch(ends[0], POLLIN, milliseconds(1));
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (watch && steady_clock::now() < end) {
        turn();
    }
    EXPECT_EQ(calls, 2);
    turn();
    EXPECT_EQ(calls, 2);
}

TEST(EventLoops, Watch_IsCalledAndMayGoWithinTheCall) {
    gWarnings = 0;
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) { ++gWarnings; });
    UseQtEventLoop();
    ExpectServed([] { QCoreApplication::processEvents(QEventLoop::AllEvents, 10); });
    {
        SdEventLoop loop;
        ExpectServed([&loop] { loop.RunOnce(milliseconds(10)); });
    }
    UseQtEventLoop();
    qInstallMessageHandler(handler);
    EXPECT_EQ(gWarnings, 0);
}

} // namespace
} // namespace drevix::test
