// What the listener knows of its sockets: which one launchd passed, and who is at the other end of a connection.
#pragma once

#include <mach/message.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace halvo::sim {

// The listening descriptor that was passed to this process under the service's name; nothing when there is none, for
// example because this process was not started by launchd. The descriptor stays launchd's: it is never closed here, and
// it is not passed on to child processes.
std::optional<int> launchSocketFor(const std::string& machServiceName);

struct PeerIdentity {
  // Linux tells the effective ids only; they stand for the real ones too. The start time of the process stands for its
  // version. All zero when the process cannot be named for certain: when it is gone or outside the machine.
  audit_token_t token{};
  pid_t pid = 0;
};

// The process that connected, which need not be the one that holds the socket by now.
PeerIdentity peerIdentityOf(int socket);

}  // namespace halvo::sim
