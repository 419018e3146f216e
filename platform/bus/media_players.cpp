#include "platform/bus/media_players.h"

#include "platform/bus/bus_callback.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace drevix {
namespace {

constexpr std::string_view kNames = "org.mpris.MediaPlayer2.";
constexpr const char *kObject = "/org/mpris/MediaPlayer2";
constexpr const char *kPlayer = "org.mpris.MediaPlayer2.Player";
constexpr const char *kStatus = "PlaybackStatus";
constexpr const char *kOwnerMatch = "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                                    "arg0namespace='org.mpris.MediaPlayer2'";
constexpr const char *kPropertiesMatch =
    "type='signal',path='/org/mpris/MediaPlayer2',member='PropertiesChanged',"
    "arg0='org.mpris.MediaPlayer2.Player'";

// Whether changed properties say that the player is playing.
bool SaysPlaying(sd_bus_message *message) {
    const char *interface = nullptr;
    if (sd_bus_message_read(message, "s", &interface) <= 0 ||
        sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) {
        return false;
    }
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char *name = nullptr;
        const char *status = nullptr;
        sd_bus_message_read(message, "s", &name);
        if (name != nullptr && std::string_view(name) == kStatus) {
            return sd_bus_message_read(message, "v", "s", &status) > 0 &&
                   std::string_view(status) == "Playing";
        }
        sd_bus_message_skip(message, "v");
        sd_bus_message_exit_container(message);
    }
    return false;
}

} // namespace

MediaPlayers::MediaPlayers() {
    SessionBus::Instance().AddClient(this);
}

MediaPlayers::~MediaPlayers() {
    SessionBus::Instance().RemoveClient(this);
}

void MediaPlayers::BusOpened(sd_bus *bus) {
    fBus = bus;
    sd_bus_slot *slot = nullptr;
    if (sd_bus_add_match_async(bus, &slot, kOwnerMatch, BusCallback<&MediaPlayers::TakeOwner>, nullptr,
                               this) >= 0) {
        fSlots.emplace_back(slot);
    }
    if (sd_bus_add_match_async(bus, &slot, kPropertiesMatch, BusCallback<&MediaPlayers::TakeProperties>,
                               nullptr, this) >= 0) {
        fSlots.emplace_back(slot);
    }
    const BusMessage call = SessionBus::NewCallToBus(bus, "ListNames");
    if (call &&
        sd_bus_call_async(bus, &slot, call.get(), BusCallback<&MediaPlayers::TakeNames>, this, 0) >= 0) {
        fSlots.emplace_back(slot);
    }
}

void MediaPlayers::BusLost() {
    fSlots.clear();
    fVolumeQuestion.reset();
    fPlayers.clear();
    fBus = nullptr;
}

int MediaPlayers::TakeNames(sd_bus_message *reply) {
    const char *name = nullptr;
    sd_bus_message_enter_container(reply, 'a', "s");
    while (sd_bus_message_read(reply, "s", &name) > 0) {
        if (std::string_view(name).starts_with(kNames)) {
            Add(name);
        }
    }
    return 0;
}

int MediaPlayers::TakeOwner(sd_bus_message *message) {
    const char *name = nullptr;
    const char *before = nullptr;
    const char *after = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &after) > 0) {
        std::erase_if(fPlayers, [&](const Player &player) { return player.name == name; });
        if (*after != '\0') {
            Add(name);
        }
    }
    return 0;
}

void MediaPlayers::Add(const std::string &name) {
    Player &player = fPlayers.emplace_back(Player{name, {}, {}});
    const BusMessage call = SessionBus::NewCallToBus(fBus, "GetNameOwner", name);
    sd_bus_slot *slot = nullptr;
    if (call &&
        sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&Player::TakeOwner>, &player, 0) >= 0) {
        player.question.reset(slot);
    }
}

int MediaPlayers::Player::TakeOwner(sd_bus_message *reply) {
    const char *connection = nullptr;
    if (sd_bus_message_is_method_error(reply, nullptr) <= 0 &&
        sd_bus_message_read(reply, "s", &connection) > 0) {
        owner = connection;
    }
    return 0;
}

int MediaPlayers::TakeProperties(sd_bus_message *message) {
    const char *sender = sd_bus_message_get_sender(message);
    const auto player = std::ranges::find(fPlayers, sender != nullptr ? sender : "", &Player::owner);
    if (player != fPlayers.end() && SaysPlaying(message)) {
        fPlayers.splice(fPlayers.end(), fPlayers, player);
    }
    return 0;
}

bool MediaPlayers::Call(const char *method) {
    if (fPlayers.empty()) {
        return false;
    }
    const BusMessage call = SessionBus::NewCall(fBus, fPlayers.back().name, kObject, kPlayer, method);
    return call && sd_bus_send(fBus, call.get(), nullptr) >= 0;
}

// Adds up changes while an answer is pending.
bool MediaPlayers::ChangeVolume(double difference) {
    if (fPlayers.empty()) {
        return false;
    }
    if (fVolumeQuestion && fVolumePlayer == fPlayers.back().name) {
        fDifference += difference;
        return true;
    }
    fVolumePlayer = fPlayers.back().name;
    fDifference = difference;
    const BusMessage call = SessionBus::NewCall(fBus, fVolumePlayer, kObject, kProperties, "Get");
    sd_bus_slot *slot = nullptr;
    if (!call || sd_bus_message_append(call.get(), "ss", kPlayer, "Volume") < 0 ||
        sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&MediaPlayers::TakeVolume>, this, 0) < 0) {
        return false;
    }
    fVolumeQuestion.reset(slot);
    return true;
}

int MediaPlayers::TakeVolume(sd_bus_message *reply) {
    double volume = 0;
    const bool isRead = sd_bus_message_is_method_error(reply, nullptr) <= 0 &&
                        sd_bus_message_read(reply, "v", "d", &volume) > 0;
    const BusMessage call = SessionBus::NewCall(fBus, fVolumePlayer, kObject, kProperties, "Set");
    if (isRead && call &&
        sd_bus_message_append(call.get(), "ssv", kPlayer, "Volume", "d",
                              std::clamp(volume + fDifference, 0.0, 1.0)) >= 0) {
        sd_bus_send(fBus, call.get(), nullptr);
    }
    fVolumeQuestion.reset();
    return 0;
}

} // namespace drevix
