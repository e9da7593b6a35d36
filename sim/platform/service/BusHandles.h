// Owners of the bus library's objects.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace halvo::sim {

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct BusMessageReleaser {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

// A bus connection belongs to one thread at a time. It is closed at once: what is still to be written is lost unless it
// was flushed.
using OwnedBus = std::unique_ptr<sd_bus, BusCloser>;
using OwnedBusMessage = std::unique_ptr<sd_bus_message, BusMessageReleaser>;

}  // namespace halvo::sim
