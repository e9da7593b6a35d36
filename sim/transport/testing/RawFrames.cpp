#include "sim/transport/testing/RawFrames.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace halvo::sim {
UniqueDescriptor connectRaw(const std::string& path) {
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot connect to " + path);
  }
  const timeval longest{.tv_sec = 30, .tv_usec = 0};
  ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
  return socket;
}

void sendRaw(const UniqueDescriptor& socket, const std::string& bytes) {
  static_cast<void>(::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

Received receiveUntilClosed(const UniqueDescriptor& socket) {
  Received received;
  for (;;) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::recv(socket.get(), bytes.data(), bytes.size(), 0);
    if (count > 0) {
      received.bytes.append(bytes.data(), static_cast<std::size_t>(count));
      continue;
    }
    received.closed = count == 0 || errno == ECONNRESET;
    return received;
  }
}

}  // namespace halvo::sim
