// The socket behind one Mach service, or behind launchd's own control interface.
#pragma once

#include <sys/socket.h>

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

}  // namespace halvo::sim
