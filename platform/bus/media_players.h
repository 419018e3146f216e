// The session's media players, by the MPRIS D-Bus Interface Specification 2.2. Never waits. Main thread only.
#pragma once

#include "platform/bus/session_bus.h"

#include <list>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace drevix {

class MediaPlayers final : public BusClient {
  public:
    // Keeps track of running players until destruction.
    MediaPlayers();
    ~MediaPlayers();

    // These ask the player that played last, else the one that appeared last. False if none is running.

    // "PlayPause", "Next", "Previous" or "Stop".
    [[nodiscard]] bool Call(const char *method);
    // Adds to the volume, which stays between 0 and the full volume, 1.0.
    [[nodiscard]] bool ChangeVolume(double difference);

    void BusOpened(sd_bus *bus) override;
    void BusLost() override;

  private:
    int TakeNames(sd_bus_message *reply);
    int TakeOwner(sd_bus_message *message);
    int TakeProperties(sd_bus_message *message);
    int TakeVolume(sd_bus_message *reply);
    void Add(const std::string &name);

    struct Player {
        std::string name;
        std::string
            owner;        // the name of its connection, which its signals come from; empty before it is known
        BusSlot question; // for that
        int TakeOwner(sd_bus_message *reply);
    };
    sd_bus *fBus = nullptr;
    std::list<Player> fPlayers; // the last one is asked
    std::vector<BusSlot> fSlots;
    BusSlot fVolumeQuestion;
    std::string fVolumePlayer; // whose volume was asked for
    double fDifference = 0;    // to be added to its answer
};

} // namespace drevix
