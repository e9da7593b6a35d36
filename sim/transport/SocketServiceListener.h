// The listener of a Mach service over a listening socket.
#pragma once

#include <memory>
#include <optional>

#include "transport/ServiceListener.h"

namespace halvo::sim {

// A listener on `listeningSocket`, which stays the caller's; without one it admits nobody. Destroying the listener cuts
// all its connections and waits for the messages that are being handled; not from one of its own threads.
std::unique_ptr<ServiceListener> makeSocketServiceListener(std::optional<int> listeningSocket);

}  // namespace halvo::sim
