// The beginning of a connection on the helper's side.
#pragma once

#include <chrono>

#include "sim/platform/service/BusHandles.h"

namespace halvo::sim {

// Lets the client on `socket` authenticate, which proves nothing here and only has to be done: admission was decided
// before. A bus that is ready for the first message, reading and writing duplicates of the socket; nothing when the
// client leaves, takes longer than `patience` of real time or does not speak the language. Not a byte of the first
// message has been read.
OwnedBus openServerBus(int socket, std::chrono::milliseconds patience);

}  // namespace halvo::sim
