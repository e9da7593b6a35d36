// Passes listening sockets to this process the way launchd passes them to a job, and connects to them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/UnixSocket.h"

namespace halvo::sim {

// For as long as it lives, a socket of that name listens in a folder of its own, where services are looked up
// meanwhile, and is the one that was passed. One at a time, and no other thread may open a descriptor while it is made:
// the position of the descriptor is part of the convention.
class LaunchedService {
 public:
  explicit LaunchedService(const std::string& name);
  LaunchedService(const LaunchedService&) = delete;
  LaunchedService& operator=(const LaunchedService&) = delete;
  ~LaunchedService();

  [[nodiscard]] std::filesystem::path socket() const { return socket_; }

 private:
  TemporaryDirectory directory_;
  std::filesystem::path socket_;
  std::optional<ListeningSocket> listening_;
};

// Bytes as a client puts them on the wire that does not use the library.
// All that a client says to begin with; messages may follow.
inline constexpr char kAuthentication[] = "\0AUTH EXTERNAL 30\r\nBEGIN\r\n";
inline std::string authentication() { return {kAuthentication, sizeof kAuthentication - 1}; }

// A connection to the socket at `path`.
UniqueDescriptor connectRaw(const std::string& path);
void sendRaw(const UniqueDescriptor& socket, const std::string& bytes);

// What comes until the other side closes, waiting at most half a minute.
struct Received {
  std::string bytes;
  bool closed = false;
};
Received receiveUntilClosed(const UniqueDescriptor& socket);

}  // namespace halvo::sim
