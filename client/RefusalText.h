// Says in words why the helper refused a request or could not complete it.
#pragma once

#include <string>
#include <string_view>

#include "client/LocalView.h"

namespace halvo {

// What happened and what to do, for a reply with that code; empty for a code that this program does not know. Where the
// reply stands for several causes, what was seen tells which one it is.
[[nodiscard]] std::string refusalText(std::string_view code, const std::string& reply, const Seen& seen);

}  // namespace halvo
