// Bytes as a client puts them on the wire that does not use the library.
#pragma once

#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {

// All that a client says to begin with; messages may follow.
inline constexpr char kAuthentication[] = "\0AUTH EXTERNAL 30\r\nBEGIN\r\n";
inline std::string authentication() { return {kAuthentication, sizeof kAuthentication - 1}; }

// A connection to the socket at `path`.
UniqueDescriptor connectRaw(const std::string& path);
void sendRaw(const UniqueDescriptor& socket, const std::string& bytes);

// What comes until the other side closes, waiting at most half a minute.
struct Received {
  std::string bytes;
  bool closed = false;
};
Received receiveUntilClosed(const UniqueDescriptor& socket);

}  // namespace halvo::sim
