#include "sim/transport/ConnectionServer.h"

#include <unistd.h>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/transport/BusHandles.h"
#include "sim/transport/MethodTable.h"

namespace halvo::sim {
namespace {

// The server's side of a connection. Authenticating proves nothing here and only has to be done: admission was decided
// before.
OwnedBus serveOn(int socket, MethodTable& methods) {
  // The library owns what it is given, and closes it on exec, while the caller's descriptor is what the listener cuts
  // connections by. By dup(2), which the thread sanitizer follows.
  UniqueDescriptor own(::dup(socket));
  sd_bus* raw = nullptr;
  if (!own.valid() || sd_bus_new(&raw) < 0) return nullptr;
  OwnedBus bus(raw);
  if (sd_bus_set_fd(raw, own.get(), own.get()) < 0) return nullptr;
  static_cast<void>(own.release());
  sd_id128_t identifier{};
  const bool started = sd_id128_randomize(&identifier) >= 0 && sd_bus_set_server(raw, 1, identifier) >= 0 &&
                       sd_bus_set_anonymous(raw, 1) >= 0 && methods.addTo(raw) && sd_bus_start(raw) >= 0;
  return started ? std::move(bus) : nullptr;
}

}  // namespace

void serveConnection(int socket, HalvoHelperProtocol& handler) {
  MethodTable methods(handler);
  const OwnedBus bus = serveOn(socket, methods);
  int status = bus ? 1 : -1;
  while (status >= 0) {
    status = sd_bus_process(bus.get(), nullptr);
    if (status == 0) status = sd_bus_wait(bus.get(), UINT64_MAX);
  }
}

}  // namespace halvo::sim
