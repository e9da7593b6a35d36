// Who is at the other end of a socket.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

namespace halvo::sim {

struct PeerIdentity {
  // Linux tells the effective ids only; they stand for the real ones too. The start time of the process stands for its
  // version. All zero when the process cannot be named for certain: when it is gone or outside the machine.
  audit_token_t token{};
  pid_t pid = 0;
};

// The process that connected, which need not be the one that holds the socket by now.
PeerIdentity peerIdentityOf(int socket);

}  // namespace halvo::sim
