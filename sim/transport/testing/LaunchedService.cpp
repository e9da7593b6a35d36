#include "sim/transport/testing/LaunchedService.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/platform/MachinePaths.h"

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

UniqueDescriptor listenAt(const std::filesystem::path& path) {
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string text = path;
  if (text.size() >= sizeof address.sun_path) throw std::runtime_error("too long for a socket: " + text);
  std::memcpy(address.sun_path, text.c_str(), text.size() + 1);
  const bool listens = ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                       ::listen(socket.get(), 256) == 0;
  if (!listens) throw std::runtime_error("cannot listen at " + text);
  return socket;
}

}  // namespace

LaunchedService::LaunchedService(const std::string& name) : socket_(directory_.path() / name) {
  const UniqueDescriptor listening = listenAt(socket_);
  if (::dup3(listening.get(), kPassed, O_CLOEXEC) < 0) throw std::runtime_error("cannot pass a socket");
  ::setenv("LISTEN_FDS", "1", 1);
  ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
  setMachServiceDirectory(directory_.path());
}

LaunchedService::~LaunchedService() {
  ::unsetenv("LISTEN_FDS");
  ::unsetenv("LISTEN_PID");
  holdPlace();
}

}  // namespace halvo::sim
