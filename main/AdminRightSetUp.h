// Puts the administrator right in order when the helper starts.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "HalvoHelper/security/AdminRight.h"

namespace halvo {

// The two things that are done with the system's authorization database.
struct AdminRightAccess {
  std::function<std::int32_t()> write = halvoRegisterAdminRight;
  std::function<std::optional<AdminRightDefinition>()> read = halvoReadAdminRight;
};

// Writes the right, reads it back, logs the outcome, and answers whether what the database holds now is sound. Writing
// alone decides nothing: a sound right may be there that could not be written again, and one that was written may not
// be what the database holds. Blocks.
[[nodiscard]] bool halvoSetUpAdminRight(const AdminRightAccess& access = {});

}  // namespace halvo
