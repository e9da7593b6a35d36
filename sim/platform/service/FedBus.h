// The bus library at work for one client, fed by hand.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/platform/service/BusHandles.h"
#include "sim/platform/service/ClientStream.h"

namespace halvo::sim {

// Left to itself, the library reads whatever the client sends: messages of 128 MiB, and past broken ones as if nothing
// had been. So it reads from a pair of sockets that gets one message at a time. It writes to the client's own socket.
// For use on one thread.
class FedBus {
 public:
  // The server's side of a connection to the client on `socket`. Nothing when descriptors or memory are short.
  static std::optional<FedBus> start(int socket);

  [[nodiscard]] sd_bus* get() const { return bus_.get(); }

  // Lets the client authenticate, which proves nothing here and only has to be done: admission was decided before.
  // Takes nothing of the first message out of the stream. False when the client leaves, does not speak the language or
  // takes longer than `patience` of real time.
  bool authenticate(ClientStream& stream, std::chrono::milliseconds patience);

  // Hands bytes of one message to the library. When they end it, the message is handled before this returns, and the
  // replies are in the client's socket. False when the connection is broken.
  bool feed(std::string_view bytes);

  // Whether the library has taken a whole message since this was last asked. One that it could not make sense of, it
  // drops.
  [[nodiscard]] bool tookMessage();

 private:
  FedBus(OwnedBus bus, UniqueDescriptor feed);

  bool handOver(std::string_view bytes);

  std::unique_ptr<bool> tookMessage_ = std::make_unique<bool>(false);  // at a place that the library keeps
  OwnedBus bus_;
  UniqueDescriptor feed_;
};

}  // namespace halvo::sim
