#include "sim/transport/testing/LaunchedService.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

constexpr int kPassed = SD_LISTEN_FDS_START;

// Keeps the place taken, from before main() on: nothing that another thread opens must ever land there.
bool holdPlace() {
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const int kept = ::fcntl(nothing, F_DUPFD_CLOEXEC, kPassed + 1);
  if (nothing != kPassed) ::close(nothing);
  const bool held = ::dup3(kept, kPassed, O_CLOEXEC) == kPassed;
  ::close(kept);
  return held;
}

[[maybe_unused]] const bool kHeldFromTheStart = holdPlace();

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) throw std::runtime_error("too long for a socket: " + path);
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

UniqueDescriptor listenAt(const std::string& path) {
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = addressOf(path);
  const bool listens = ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                       ::listen(socket.get(), 256) == 0;
  if (!listens) throw std::runtime_error("cannot listen at " + path);
  return socket;
}

}  // namespace

LaunchedService::LaunchedService(const std::string& name) : socket_(directory_.path() / name) {
  const UniqueDescriptor listening = listenAt(socket_);
  if (::dup3(listening.get(), kPassed, O_CLOEXEC) < 0) throw std::runtime_error("cannot pass a socket");
  ::setenv("LISTEN_FDS", "1", 1);
  ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
  ::setenv("LISTEN_FDNAMES", name.c_str(), 1);
  setMachServiceDirectory(directory_.path());
}

LaunchedService::~LaunchedService() {
  ::unsetenv("LISTEN_FDS");
  ::unsetenv("LISTEN_PID");
  ::unsetenv("LISTEN_FDNAMES");
  holdPlace();
}

UniqueDescriptor connectRaw(const std::string& path) {
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = addressOf(path);
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
