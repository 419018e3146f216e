// Member functions as callbacks of the bus library. Internal to this folder.
#pragma once

#include <new>
#include <systemd/sd-bus.h>

namespace drevix {

template <typename Object>
Object ObjectOf(int (Object::*)(sd_bus_message *));
template <typename Object>
const Object ObjectOf(int (Object::*)(sd_bus_message *) const);

// A callback that passes the message to a member function of the user data object. If memory runs out there,
// the message is lost: no exception may cross the library.
template <auto kMember>
int BusCallback(sd_bus_message *message, void *object, sd_bus_error * /*error*/) try {
    return (static_cast<decltype(ObjectOf(kMember)) *>(object)->*kMember)(message);
} catch (const std::bad_alloc &) {
    return 0;
}

} // namespace drevix
