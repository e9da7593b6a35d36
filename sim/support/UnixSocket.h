// Sockets with a name in the file system: behind a Mach service, or behind launchd's own control interface.
#pragma once

#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {

// Listens from the start until it goes out of scope; then its name is gone too, so that nobody finds it any more.
class ListeningSocket {
 public:
  // Everybody may connect. Replaces what a machine that was switched off left under the name. Nothing, with errno set,
  // when that fails.
  static std::optional<ListeningSocket> open(const std::filesystem::path& name, int type = SOCK_STREAM);

  ListeningSocket(ListeningSocket&&) noexcept = default;
  ListeningSocket& operator=(ListeningSocket&&) = delete;
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;
  ~ListeningSocket();

  [[nodiscard]] int descriptor() const { return descriptor_.get(); }

 private:
  ListeningSocket(UniqueDescriptor descriptor, std::filesystem::path name);

  UniqueDescriptor descriptor_;
  std::filesystem::path name_;
};

// A connection to the socket of that name; not valid, with errno set, when there is none to be had. Connecting waits
// while the other side has as many clients as it takes, and so does sending; without `patience` for ever.
UniqueDescriptor connectTo(const std::filesystem::path& name, int type = SOCK_STREAM,
                           std::chrono::seconds patience = {});

}  // namespace halvo::sim
