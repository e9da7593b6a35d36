// What the helper and the application must agree on besides the protocol itself.
#pragma once

#include <cstdint>
#include <string_view>

namespace halvo {

// The name under which launchd keeps the helper's listener.
inline constexpr std::string_view kHalvoHelperMachService = "com.halvo.helper";

// Reported in the ping reply; raised whenever the protocol gains or changes a method.
inline constexpr std::int64_t kHalvoHelperXPCVersion = 6;

// The authorization right that every state-changing request must carry.
inline constexpr std::string_view kHalvoAdminRight = "com.halvo.helper.manage-system";

// The answer of every method with a text reply to a client that is not authorized.
inline constexpr std::string_view kHalvoUnauthorizedReplyJSON = "{\"code\":\"unauthorized\"}";

}  // namespace halvo
