#include "companion/korvane_sync.h"
#include "companion/notification_socket.h"
#include "platform/status.h"
#include "settings/device_prefs.h"
#include "tests/companion/companion_folder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>

namespace drevix {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char *kMessage =
    "<update_cfg>_System_,Photoshop,Illustrator,InDesign,PSElements</update_cfg>";

std::ptrdiff_t OpenDescriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
}

std::uint16_t PortOf(test::Peer &peer) {
    return static_cast<std::uint16_t>(std::atoi(peer.Line().c_str()));
}

// Lets the event loop run until the condition holds, at most ten seconds.
template <typename Condition>
bool RunUntil(const Condition &condition) {
    const auto end = steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && steady_clock::now() < end) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
        ::usleep(1000);
    }
    return condition();
}

// A program with an event loop, which the tests without one have not.
struct EventLoop {
    int count = 0;
    QCoreApplication application{count, nullptr};
};

TEST(NotificationSocket, Address_HasThePublishedLayout) {
    SocketAddress address{};
    std::memset(&address, 0xEE, sizeof address);
    ASSERT_EQ(SocketInitAddress(&address, 5539, nullptr), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&address), sizeof address),
              test::FromHex("00 02 15 A3 7F 00 00 01 0000000000000000"));
    ASSERT_EQ(SocketInitAddress(&address, 1, "192.0.2.7"), 0);
    EXPECT_EQ(address.address, (std::array<std::uint8_t, 4>{192, 0, 2, 7}));
    const SocketAddress before = address;
    const std::string unknown(64, 'x'); // a label has at most 63 characters: no resolver asks for it
    EXPECT_EQ(SocketInitAddress(&address, 1, unknown.c_str()), -1);
    EXPECT_EQ(std::memcmp(&address, &before, sizeof before), 0);
    EXPECT_EQ(SocketInitAddress(nullptr, 1, nullptr), -1);
    EXPECT_EQ(SocketSendMessage(kMessage, 1, unknown.c_str()), -1);
    EXPECT_EQ(OpenSocketCount(), 0U);
}

TEST(NotificationSocket, Message_ArrivesWholeAndTheConnectionEndsWithTheAnswer) {
    ASSERT_EQ(std::strlen(kMessage), 75U);
    const EventLoop loop;
    const auto before = OpenDescriptors();
    for (const char *manner : {"answer", "close", "flood"}) {
        test::Peer peer(std::string("listen 0 ") + manner);
        ASSERT_EQ(SocketSendMessage(kMessage, PortOf(peer), nullptr), 0) << manner;
        EXPECT_EQ(OpenSocketCount(), 1U);
        EXPECT_TRUE(RunUntil([] { return OpenSocketCount() == 0; })) << manner;
        EXPECT_EQ(peer.Rest(), std::string(kMessage) + "\n") << manner;
    }
    // No message at all: the connection is made, and the peer gets its end when we go.
    test::Peer peer("listen 0 read");
    ASSERT_EQ(SocketSendMessage(nullptr, PortOf(peer), "localhost"), 0);
    test::Peer others("listen 0 silent 8");
    const std::uint16_t port = PortOf(others);
    for (std::size_t i = 0; i < kMostWaitingSockets; ++i) {
        ASSERT_EQ(SocketSendMessage(kMessage, port, nullptr), 0);
    }
    EXPECT_EQ(peer.Rest(), "\n");
    EXPECT_EQ(others.Rest(), "8\n");
    EXPECT_TRUE(RunUntil([] { return OpenSocketCount() == 0; }));
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(NotificationSocket, WaitingSockets_AreBoundedAndServedWithoutAnEventLoop) {
    const auto before = OpenDescriptors();
    {
        test::Peer peer("listen 0 silent 12");
        const std::uint16_t port = PortOf(peer);
        for (std::size_t i = 1; i <= 12; ++i) {
            ASSERT_EQ(SocketSendMessage(kMessage, port, nullptr), 0);
            EXPECT_EQ(OpenSocketCount(), std::min(i, kMostWaitingSockets));
        }
        EXPECT_EQ(peer.Rest(), "12\n"); // those that were closed had sent their message all the same
    }
    // All have hung up: the next message, refused or not, finds that out.
    EXPECT_NE(SocketSendMessage(kMessage, 1, nullptr), 0);
    EXPECT_EQ(OpenSocketCount(), 0U);
    EXPECT_LE(OpenDescriptors(), before);
}

TEST(NotificationSocket, Failures_LeaveNothingOpenAndHoldNobodyUp) {
    const int full = ::socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in at {};
    at.sin_family = AF_INET;
    at.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof at;
    ASSERT_EQ(::bind(full, reinterpret_cast<struct sockaddr *>(&at), size), 0);
    ASSERT_EQ(::getsockname(full, reinterpret_cast<struct sockaddr *>(&at), &size), 0);
    const std::uint16_t port = ::ntohs(at.sin_port);
    EXPECT_NE(SocketSendMessage(kMessage, port, nullptr), 0); // nobody listens
    EXPECT_EQ(OpenSocketCount(), 0U);

    ASSERT_EQ(::listen(full, 0), 0);
    const auto start = steady_clock::now();
    std::int32_t last = 0;
    for (int i = 0; i < 4; ++i) { // nobody accepts, and the queue is full soon
        last = SocketSendMessage(kMessage, port, nullptr);
    }
    EXPECT_NE(last, 0);
    EXPECT_LT(steady_clock::now() - start, milliseconds(1000));
    const std::size_t waiting = OpenSocketCount();
    EXPECT_LT(waiting, 4U);

    // More than the buffers between the two take is given up too.
    const std::string endless(64 << 20, 'x');
    const auto begun = steady_clock::now();
    test::Peer deaf("listen 0 silent 1");
    EXPECT_NE(SocketSendMessage(endless.c_str(), PortOf(deaf), nullptr), 0);
    EXPECT_LT(steady_clock::now() - begun, milliseconds(3000));
    EXPECT_EQ(OpenSocketCount(), waiting);
    EXPECT_EQ(deaf.Rest(), "0\n");
    ::close(full); // which the peer of one that was not taken yet finds out when it sends again
    for (int tries = 0; tries < 1000 && OpenSocketCount() > 0; ++tries) {
        EXPECT_NE(SocketSendMessage(kMessage, port, nullptr), 0);
        ::usleep(10'000);
    }
    EXPECT_EQ(OpenSocketCount(), 0U);
}

TEST(NotificationSocket, Synchronisation_AnnouncesItself) {
    test::CompanionFolder folder;
    test::Peer peer("listen 5539 close");
    const std::string port = peer.Line();
    if (port == "taken") {
        GTEST_SKIP() << "port 5539 is in use here";
    }
    const QBaseOwner base = NewDrevixBase();
    EXPECT_EQ(SyncToKorvane(base.get()), 0);
    const EventLoop loop;
    EXPECT_NE(SocketSendMessage(kMessage, 1, nullptr), 0);
    while (OpenSocketCount() > 0) {
        std::ignore = SocketSendMessage(nullptr, 1, nullptr);
    }
    EXPECT_EQ(peer.Rest(), std::string(kMessage) + "\n");
}

} // namespace
} // namespace drevix
