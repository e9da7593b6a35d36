// Owners of the bus library's objects.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace halvo::sim {

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct BusSlotReleaser {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
struct BusMessageReleaser {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

// A bus connection belongs to one thread at a time. It is closed at once: what is still to be written is lost unless it
// was flushed.
using OwnedBus = std::unique_ptr<sd_bus, BusCloser>;
// A call that waits for its answer; without its slot the answer is dropped.
using OwnedBusSlot = std::unique_ptr<sd_bus_slot, BusSlotReleaser>;
using OwnedBusMessage = std::unique_ptr<sd_bus_message, BusMessageReleaser>;

}  // namespace halvo::sim
