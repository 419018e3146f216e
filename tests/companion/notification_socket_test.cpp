#include "companion/korvane_sync.h"
#include "companion/notification_socket.h"
#include "platform/bus/sd_event_loop.h"
#include "settings/device_prefs.h"
#include "tests/companion/companion_folder.h"

namespace drevix::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr auto kMessage = "<update_cfg>_System_,Photoshop,Illustrator,InDesign,PSElements</update_cfg>";

std::ptrdiff_t OpenDescriptors() {
    const fs::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
}

std::int32_t Send(const char *message, int port, const char *host = nullptr) {
    return SocketSendMessage(message, static_cast<std::uint16_t>(port), host);
}

// What the tests without one have not.
struct ServingLoop : SdEventLoop {
    // Runs until no socket is left, at most ten seconds.
    void Run() {
        const milliseconds end = OwnTime() + seconds(10);
        while (OpenSocketCount() > 0 && OwnTime() < end) {
            RunOnce(milliseconds(50));
        }
        EXPECT_EQ(OpenSocketCount(), 0U);
    }
};

TEST(NotificationSocket, Address_HasThePublishedLayout) {
    SocketAddress address{0xEE, 0xEE, {0xEE, 0xEE}, {}, {0xEE}};
    const auto bytes = [&] { return std::string(reinterpret_cast<const char *>(&address), sizeof address); };
    ASSERT_EQ(SocketInitAddress(&address, 5539, nullptr), 0);
    EXPECT_EQ(bytes(), FromHex("00 02 15 A3 7F 00 00 01 0000000000000000"));
    ASSERT_EQ(SocketInitAddress(&address, 1, "192.0.2.7"), 0);
    EXPECT_EQ(bytes(), FromHex("00 02 00 01 C0 00 02 07 0000000000000000"));
    const std::string unknown(64, 'x'); // a label has at most 63 characters: no resolver asks for it
    EXPECT_EQ(SocketInitAddress(&address, 2, unknown.c_str()), -1);
    EXPECT_EQ(bytes(), FromHex("00 02 00 01 C0 00 02 07 0000000000000000"));
    EXPECT_EQ(SocketInitAddress(nullptr, 1, nullptr), -1);
    EXPECT_EQ(Send(kMessage, 1, unknown.c_str()), -1);
    EXPECT_NE(Send(nullptr, 1, "255.255.255.255"), 0) << "a refusal at once is one";
    EXPECT_EQ(OpenSocketCount(), 0U);
}

TEST(NotificationSocket, Message_ArrivesWholeAndTheConnectionEndsWithTheAnswer) {
    ServingLoop loop;
    const auto before = OpenDescriptors();
    for (const char *manner : {"answer", "close", "flood"}) {
        Peer peer(std::string("listen 0 ") + manner);
        ASSERT_EQ(Send(kMessage, peer.Number(), "localhost"), 0) << manner;
        EXPECT_EQ(OpenSocketCount(), 1U);
        loop.Run();
        EXPECT_EQ(peer.Rest(), std::string(kMessage) + "\n") << manner;
    }
    EXPECT_LE(OpenDescriptors(), before);
}

TEST(NotificationSocket, WaitingSockets_AreBoundedAndServedWithoutAnEventLoop) {
    const auto before = OpenDescriptors();
    Peer first("listen 0 read");
    ASSERT_EQ(Send(nullptr, first.Number()), 0); // no message at all
    Peer others("listen 0 silent 12 0.5");
    const int port = others.Number();
    for (std::size_t i = 2; i <= 13; ++i) {
        ASSERT_EQ(Send(kMessage, port), 0);
        EXPECT_EQ(OpenSocketCount(), std::min(i, kMostWaitingSockets));
    }
    EXPECT_EQ(first.Rest(), "\n") << "the oldest one goes first";
    EXPECT_EQ(others.Rest(), "12\n") << "those that were closed had sent their message all the same";
    // All have hung up: the next message, refused or not, finds that out, whatever was interrupted before.
    errno = EINTR;
    EXPECT_NE(Send(nullptr, 1), 0);
    EXPECT_EQ(OpenSocketCount(), 0U);
    EXPECT_LE(OpenDescriptors(), before);
}

TEST(NotificationSocket, Failures_LeaveNothingOpenAndHoldNobodyUp) {
    SocketAddToRunLoop(0); // none
    // More than the buffers between the two take is given up.
    const std::string endless(64 << 20, 'x');
    Peer deaf("listen 0 silent 1 2");
    const int deafPort = deaf.Number();
    milliseconds start = OwnTime();
    EXPECT_NE(Send(endless.c_str(), deafPort), 0);
    EXPECT_LT(OwnTime() - start, seconds(1));
    EXPECT_EQ(OpenSocketCount(), 0U);
    EXPECT_EQ(deaf.Rest(), "0\n");

    Peer full("listen 0 silent 0 2");
    const int fullPort = full.Number();
    start = OwnTime();
    std::int32_t last = 0;
    for (int i = 0; i < 4; ++i) { // it takes none, and its queue is full soon
        last = Send(kMessage, fullPort);
    }
    EXPECT_NE(last, 0);
    EXPECT_LT(OwnTime() - start, seconds(1));
    EXPECT_LT(OpenSocketCount(), 4U);
    full.Rest(); // which the one that was not in the queue yet finds out when it sends again
    for (int tries = 0; tries < 1000 && OpenSocketCount() > 0; ++tries) {
        EXPECT_NE(Send(kMessage, fullPort), 0);
        ::usleep(10'000);
    }
    EXPECT_EQ(OpenSocketCount(), 0U);
}

TEST(NotificationSocket, Synchronisation_AnnouncesItself) {
    const CompanionFolder folder;
    Peer peer("listen 5539 close");
    if (peer.Number() != 5539) {
        GTEST_SKIP() << "port 5539 is in use here";
    }
    ServingLoop loop;
    EXPECT_EQ(SyncToKorvane(NewDrevixBase().get()), 0);
    loop.Run();
    EXPECT_EQ(peer.Rest(), std::string(kMessage) + "\n");
}

} // namespace
} // namespace drevix::test
