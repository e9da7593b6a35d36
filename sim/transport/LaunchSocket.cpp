#include "sim/transport/LaunchSocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>

#include <filesystem>
#include <system_error>

#include "sim/platform/MachinePaths.h"

namespace halvo::sim {
namespace {

// Where a local socket is bound; empty for anything else.
std::filesystem::path boundPath(int descriptor) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
  if (address.sun_family != AF_UNIX || size <= offsetof(sockaddr_un, sun_path)) return {};
  return address.sun_path;
}

// One folder can have several names: /var is a link into /private.
bool isSamePlace(const std::filesystem::path& one, const std::filesystem::path& other) {
  std::error_code failed;
  const auto first = std::filesystem::weakly_canonical(one, failed);
  if (failed) return false;
  const auto second = std::filesystem::weakly_canonical(other, failed);
  return !failed && first == second;
}

}  // namespace

std::optional<int> launchSocketFor(const std::string& machServiceName) {
  const int passed = sd_listen_fds(0);
  for (int descriptor = SD_LISTEN_FDS_START; descriptor < SD_LISTEN_FDS_START + passed; ++descriptor) {
    if (sd_is_socket(descriptor, AF_UNIX, SOCK_STREAM, 1) <= 0) continue;
    if (isSamePlace(boundPath(descriptor), machServiceDirectory() / machServiceName)) return descriptor;
  }
  return std::nullopt;
}

}  // namespace halvo::sim
