// What a connection offers: the helper's methods and the greeting, as the bus library wants them described.
#pragma once

#include <systemd/sd-bus.h>

#include <array>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "HalvoHelperXPC/MessageTable.h"

namespace halvo::sim {

// Serves the messages of the protocol on one bus connection, each by a call of the handler. Stays where it is while the
// bus uses it, and must outlive it.
class MethodTable {
 public:
  explicit MethodTable(HalvoHelperProtocol& handler);
  MethodTable(const MethodTable&) = delete;
  MethodTable& operator=(const MethodTable&) = delete;

  // False when the library refuses.
  [[nodiscard]] bool addTo(sd_bus* bus);

 private:
  // What the library hands back with a call; the position tells the message.
  struct Method {
    HalvoHelperProtocol* handler;
    MessageId id;
  };

  static int onCall(sd_bus_message* call, void* method, sd_bus_error* error);
  static const sd_bus_vtable* description();

  std::array<Method, kHalvoHelperMessages.size()> methods_;
};

}  // namespace halvo::sim
