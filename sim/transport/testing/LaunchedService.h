// Passes listening sockets to this process the way launchd passes them to a job.
#pragma once

#include <filesystem>
#include <string>

#include "sim/support/TemporaryDirectory.h"

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
};

}  // namespace halvo::sim
