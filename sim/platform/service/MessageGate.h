// A look at the next message of a connection before the bus library reads it.
#pragma once

namespace halvo::sim {

enum class NextMessage {
  none,        // nothing has arrived
  incomplete,  // not yet enough has arrived to tell
  acceptable,
  tooLarge,  // its header announces more than kMaxMessageBytes
  ended,     // the client has closed the connection, or it is broken
};

// Looks without blocking and without taking anything out of the socket, which must stand between two messages. What
// only the library can judge, such as a header that is no header, counts as acceptable.
[[nodiscard]] NextMessage lookAtNextMessage(int socket);

}  // namespace halvo::sim
