// The session's processes, as the bus reports them. Internal to this folder. Main thread only.
#pragma once

#include "platform/bus/process_names.h"
#include "platform/bus/processes.h"
#include "platform/bus/session_bus.h"

#include <map>
#include <string>

namespace drevix {

class ProcessList final : public BusClient {
  public:
    struct Process {
        std::string busName;
        std::string owner; // the connection's unique name; empty until the bus reports it
    };

    static ProcessList &Instance();

    // Connects if necessary and processes what the bus has reported; waits for the list only after
    // connecting.
    void BringUpToDate();
    // The first process with a greater id; the process with this id. Null if there is none.
    [[nodiscard]] const NamedProcess *After(std::uint32_t id) const;
    [[nodiscard]] const NamedProcess *Find(std::uint32_t id) const;
    [[nodiscard]] const Process *Connection(std::uint32_t id) const;
    // A process other than `own` with its name, letter case ignored; null if there is none.
    [[nodiscard]] const NamedProcess *Namesake(const NamedProcess &own) const;

    void BusOpened(sd_bus *bus) override;
    void BusLost() override;

  private:
    struct Entry {
        NamedProcess named;
        Process process;
    };
    struct OwnerQuestion;

    ProcessList();
    int TakeNames(sd_bus_message *message);
    int TakeOwnerChange(sd_bus_message *message);
    void SetOwner(const std::string &busName, const std::string &owner);
    void AskForOwner(const std::string &busName);
    const Entry *EntryOf(std::uint32_t id) const;

    // By process id; if a process has two names, the first in sort order counts.
    std::map<std::pair<std::uint32_t, std::string>, Entry> fEntries;
    sd_bus *fBus = nullptr;
    bool fIsKnown = false;
    bool fHasWaited = false;
};

} // namespace drevix
