// One admitted client, served on one thread from its first message to its last.
#pragma once

#include <chrono>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo::sim {

// Calls `handler` for each message that arrives on `socket`, one at a time and in order. Returns when the client has
// gone, has not authenticated within `patience` of real time, or has sent what no client sends; the caller then closes
// the socket. Waiting costs nothing but this thread.
void serveConnection(int socket, HalvoHelperProtocol& handler, std::chrono::milliseconds patience);

}  // namespace halvo::sim
