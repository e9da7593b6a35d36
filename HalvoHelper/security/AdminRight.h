// The product's own right in the system's authorization database: what it says, writing it, and judging what the
// database holds.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace halvo {

// A value of any other type than those that a right of ours uses.
struct AdminRightOther {
  bool operator==(const AdminRightOther&) const = default;
};
using AdminRightValue = std::variant<AdminRightOther, bool, std::int64_t, std::string>;
using AdminRightDefinition = std::map<std::string, AdminRightValue, std::less<>>;

// A member of group "admin" must authenticate, root included; what was obtained stays valid for 300 seconds.
[[nodiscard]] AdminRightDefinition halvoAdminRightDefinition();

// Whether the definition demands at least an administrator's authentication. Time-out, version and keys beyond ours do
// not matter: the database adds some of its own.
[[nodiscard]] bool halvoAdminRightIsSound(const AdminRightDefinition& definition);

// The definition under kHalvoAdminRight now (AuthorizationRightGet); nothing when there is none or it cannot be read.
[[nodiscard]] std::optional<AdminRightDefinition> halvoReadAdminRight();

// Writes our definition over whatever is there (AuthorizationRightSet), so that one that was tampered with or is out
// of date is repaired. Answers the status of the call that decided, 0 on success. Blocks.
std::int32_t halvoRegisterAdminRight();

}  // namespace halvo
