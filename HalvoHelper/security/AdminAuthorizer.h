// Checks the proof that an administrator approved a request.
#pragma once

#include <cstddef>
#include <span>

namespace halvo {

class AdminAuthorizer {
 public:
  AdminAuthorizer() = default;
  AdminAuthorizer(const AdminAuthorizer&) = delete;
  AdminAuthorizer& operator=(const AdminAuthorizer&) = delete;
  virtual ~AdminAuthorizer() = default;

  // Whether the authorization behind these bytes, which came from the client unchecked, carries the right. Never shows
  // a prompt; never says why not. Blocks for milliseconds; any thread.
  virtual bool isAuthorized(std::span<const std::byte> externalForm) const = 0;
};

}  // namespace halvo
