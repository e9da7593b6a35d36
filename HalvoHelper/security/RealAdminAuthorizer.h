// Asks Authorization Services whether a client's authorization carries the product's right.
#pragma once

#include <string>

#include "HalvoHelper/security/AdminAuthorizer.h"
#include "HalvoHelperXPC/Constants.h"

namespace halvo {

// Stateless but for the right's name; each call makes and frees its own authorization reference.
class RealAdminAuthorizer final : public AdminAuthorizer {
 public:
  explicit RealAdminAuthorizer(std::string right = std::string(kHalvoAdminRight));

  bool isAuthorized(std::span<const std::byte> externalForm) const override;

 private:
  std::string right_;
};

}  // namespace halvo
