// What a stranger does that ends before anybody has looked at it.
#pragma once

namespace halvo::soak {

// Connects, sends the beginning of a conversation, and ends the process. Only in a child.
[[noreturn]] void connectAndEnd();

}  // namespace halvo::soak
