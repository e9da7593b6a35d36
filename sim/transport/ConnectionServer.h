// One admitted client, served on one thread from its first message to its last.
#pragma once

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo::sim {

// Calls `handler` for each message that arrives on `socket`, one at a time and in order. Returns when the connection
// has ended; the caller then closes the socket. What a client may send and how long it may take to authenticate is left
// to the bus library. Waiting costs nothing but this thread.
void serveConnection(int socket, HalvoHelperProtocol& handler);

}  // namespace halvo::sim
