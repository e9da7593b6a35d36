#include "sim/transport/testing/LaunchedService.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
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

}  // namespace

LaunchedService::LaunchedService(const std::string& name)
    : socket_(directory_.path() / name), listening_(ListeningSocket::open(socket_)) {
  if (!listening_ || ::dup3(listening_->descriptor(), kPassed, O_CLOEXEC) < 0) {
    throw std::runtime_error("cannot pass a socket");
  }
  ::setenv("LISTEN_FDS", "1", 1);
  ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
  ::setenv("LISTEN_FDNAMES", name.c_str(), 1);
  machinePaths().machServices = directory_.path();
}

LaunchedService::~LaunchedService() {
  ::unsetenv("LISTEN_FDS");
  ::unsetenv("LISTEN_PID");
  ::unsetenv("LISTEN_FDNAMES");
  holdPlace();
}

UniqueDescriptor connectRaw(const std::string& path) {
  UniqueDescriptor socket = connectTo(path);
  if (!socket.valid()) throw std::runtime_error("cannot connect to " + path);
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
