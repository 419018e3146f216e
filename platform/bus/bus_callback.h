// Member functions as callbacks of the bus library. For the other files of this folder.
#pragma once

#include <new>
#include <systemd/sd-bus.h>

namespace drevix {

template <typename Object>
Object ObjectOf(int (Object::*)(sd_bus_message *));
template <typename Object>
const Object ObjectOf(int (Object::*)(sd_bus_message *) const);

// A callback that hands the message to a member function of the library's user data. Memory that is missing
// there loses the message, not the program: no exception may cross the library.
template <auto kMember>
int BusCallback(sd_bus_message *message, void *object, sd_bus_error * /*error*/) try {
    return (static_cast<decltype(ObjectOf(kMember)) *>(object)->*kMember)(message);
} catch (const std::bad_alloc &) {
    return 0;
}

} // namespace drevix
