#include "sim/transport/LaunchSocket.h"

#include <systemd/sd-daemon.h>

#include <cstdlib>
#include <memory>

namespace halvo::sim {

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

}  // namespace halvo::sim
