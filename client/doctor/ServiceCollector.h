// Asks the helper what it says of itself.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "client/Conversation.h"
#include "client/doctor/Examination.h"

namespace halvo {

// The users in a reply such as {"uids":[501,502]}, at most a thousand; nothing for any other text.
[[nodiscard]] std::optional<std::vector<std::int64_t>> usersIn(const std::string& reply);

// Makes the two requests that change nothing. Blocks as long as the conversation waits for a reply, at most twice.
[[nodiscard]] Service collectService(Conversation& conversation);

}  // namespace halvo
