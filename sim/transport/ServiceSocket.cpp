#include "sim/transport/ServiceSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <systemd/sd-daemon.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/Processes.h"

namespace halvo::sim {
namespace {

// SO_PEERPIDFD, newer than the system headers.
constexpr int kPeerPidDescriptor = 77;

// Whether the process that connected has certainly not ended. Its number could otherwise have been given to another
// process, whose start time would then be read. A kernel without such descriptors leaves that gap open.
bool stillRuns(int socket) {
  int raw = -1;
  socklen_t size = sizeof raw;
  if (::getsockopt(socket, SOL_SOCKET, kPeerPidDescriptor, &raw, &size) != 0) return errno == ENOPROTOOPT;
  const UniqueDescriptor process(raw);
  pollfd ended{.fd = process.get(), .events = POLLIN, .revents = 0};
  return ::poll(&ended, 1, 0) == 0;
}

}  // namespace

std::optional<int> launchSocketFor(const std::string& machServiceName) {
  char** names = nullptr;
  const int passed = sd_listen_fds_with_names(0, &names);
  std::optional<int> found;
  for (int i = 0; i < passed; ++i) {
    const std::unique_ptr<char, decltype(&std::free)> name(names[i], &std::free);
    const int descriptor = SD_LISTEN_FDS_START + i;
    if (machServiceName == name.get() && sd_is_socket(descriptor, AF_UNIX, SOCK_STREAM, 1) > 0) found = descriptor;
  }
  std::free(names);
  return found;
}

PeerIdentity peerIdentityOf(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0) return {};
  PeerIdentity identity{.token = {}, .pid = peer.pid};
  const auto version = processVersion(peer.pid);
  // Asked after the version was read: who runs now ran then.
  if (!version || !stillRuns(socket)) return identity;
  const auto pid = static_cast<unsigned>(peer.pid);
  identity.token = {{peer.uid, peer.uid, peer.gid, peer.uid, peer.gid, pid, 0, *version}};
  return identity;
}

}  // namespace halvo::sim
