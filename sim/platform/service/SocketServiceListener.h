// The listener of a Mach service over a listening socket.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "platform/service/ServiceListener.h"

namespace halvo::sim {

struct ListenerLimits {
  // Further clients wait in the socket's queue until one leaves.
  std::size_t connections = 64;
  // For a client to authenticate, in real time: otherwise it would hold one of the connections for ever.
  std::chrono::milliseconds patience = std::chrono::seconds(25);
};

// A listener on `listeningSocket`, which stays the caller's; without one it admits nobody. Destroying the listener cuts
// all its connections and waits for the messages that are being handled; not from one of its own threads.
std::unique_ptr<ServiceListener> makeSocketServiceListener(std::optional<int> listeningSocket,
                                                           const ListenerLimits& limits = {});

}  // namespace halvo::sim
