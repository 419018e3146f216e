#include "platform/windows/sway_layout.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;

constexpr std::chrono::milliseconds kTimeForSway{200};
constexpr std::string_view kSwayMagic = "i3-ipc";
constexpr std::uint32_t kLongestSwayMessage = 1 << 20;
constexpr const char *kGroupField = "xkb_active_layout_index";
constexpr const char *kVirtualKeyboard = "0:0:virtual_keyboard"; // of programs, such as ours

// Kinds of messages (sway-ipc(7)).
constexpr std::uint32_t kSubscribe = 2;
constexpr std::uint32_t kGetInputs = 100;
constexpr std::uint32_t kInputEvent = 0x80000015;

SystemDescriptor ConnectedToSway() {
    const char *const path = std::getenv("SWAYSOCK");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path == nullptr || *path == '\0' || std::strlen(path) >= sizeof address.sun_path) {
        return {};
    }
    std::string_view(path).copy(address.sun_path, sizeof address.sun_path - 1);
    SystemDescriptor connected(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto *const where = reinterpret_cast<const sockaddr *>(&address);
    return connected && connect(connected.Get(), where, sizeof address) == 0 ? std::move(connected)
                                                                             : SystemDescriptor();
}

// Lengths and kinds come in the machine's own byte order.
std::string SwayRequest(std::uint32_t kind, std::string_view text) {
    const std::array<std::uint32_t, 2> head{static_cast<std::uint32_t>(text.size()), kind};
    return std::string(kSwayMagic)
        .append(reinterpret_cast<const char *>(head.data()), sizeof head)
        .append(text);
}

// The group of an input device; nothing if it is no keyboard.
std::optional<std::uint32_t> GroupOf(const Json &input) {
    const Json group = input.is_object() ? input.value(kGroupField, Json()) : Json();
    return group.is_number_unsigned() ? std::optional(group.get<std::uint32_t>()) : std::nullopt;
}

bool IsVirtual(const Json &input) {
    return input.value("identifier", Json()) == kVirtualKeyboard;
}

} // namespace

std::unique_ptr<SwayLayout> SwayLayout::Open() {
    SystemDescriptor socket = ConnectedToSway();
    if (!socket) {
        return nullptr;
    }
    std::unique_ptr<SwayLayout> layout(new SwayLayout(std::move(socket)));
    return layout->Ask() ? std::move(layout) : nullptr;
}

bool SwayLayout::Ask() {
    const std::string requests = SwayRequest(kSubscribe, R"(["input"])") + SwayRequest(kGetInputs, "");
    if (send(Descriptor(), requests.data(), requests.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(requests.size())) {
        return false;
    }
    const Clock::time_point end = Clock::now() + kTimeForSway;
    while (!fIsAnswered) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd look = {.fd = Descriptor(), .events = POLLIN, .revents = 0};
        if (left <= 0 || poll(&look, 1, static_cast<int>(left)) <= 0 || !Take()) {
            return false;
        }
    }
    return true;
}

bool SwayLayout::Take() {
    constexpr std::size_t kHead = kSwayMagic.size() + 2 * sizeof(std::uint32_t);
    std::array<char, 4096> bytes{};
    ssize_t count = 0;
    while ((count = read(Descriptor(), bytes.data(), bytes.size())) > 0) {
        fBytes.append(bytes.data(), static_cast<std::size_t>(count));
    }
    const bool isOpen = count < 0 && (errno == EAGAIN || errno == EINTR);
    std::string_view rest = fBytes;
    while (rest.size() >= kHead) {
        std::array<std::uint32_t, 2> head{};
        std::memcpy(head.data(), rest.data() + kSwayMagic.size(), sizeof head);
        if (!rest.starts_with(kSwayMagic) || head[0] > kLongestSwayMessage) {
            return false;
        }
        if (rest.size() < kHead + head[0]) {
            break;
        }
        if (!TakeMessage(head[1], rest.substr(kHead, head[0]))) {
            return false;
        }
        rest.remove_prefix(kHead + head[0]);
    }
    fBytes.erase(0, fBytes.size() - rest.size());
    return isOpen;
}

bool SwayLayout::TakeMessage(std::uint32_t kind, std::string_view text) {
    if (kind != kGetInputs && kind != kInputEvent) {
        return true;
    }
    const Json told = Json::parse(text, nullptr, false);
    if (kind == kInputEvent) {
        if (told.is_object()) {
            TakeChange(told.value("change", Json()), told.value("input", Json()));
        }
        return told.is_object();
    }
    fIsAnswered = told.is_array();
    fHasReal = fIsAnswered && std::ranges::any_of(told, [](const Json &input) {
                   return GroupOf(input) && !IsVirtual(input);
               });
    for (std::size_t i = 0; fIsAnswered && fGroup == 0 && i < told.size(); ++i) {
        TakeKeyboard(told[i]);
    }
    return fIsAnswered;
}

// A keyboard that appears, or a program's that gets a keymap, has the first layout without being switched to it:
// ours does both after the session was switched. The first that is not a program's counts at once.
void SwayLayout::TakeChange(const nlohmann::json &change, const nlohmann::json &input) {
    const bool isReal = GroupOf(input) && !IsVirtual(input);
    const bool isFirst = isReal && !fHasReal;
    fHasReal = fHasReal || isReal;
    if (change == "xkb_layout" || (isReal && (isFirst || change == "xkb_keymap"))) {
        TakeKeyboard(input);
    }
}

// Keyboards of programs count only where there are no others.
void SwayLayout::TakeKeyboard(const nlohmann::json &input) {
    const auto group = GroupOf(input);
    if (group && !(fHasReal && IsVirtual(input))) {
        fGroup = *group;
    }
}

} // namespace drevix
