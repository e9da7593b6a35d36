#include "sim/platform/service/ServerHandshake.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {
namespace {

using Clock = std::chrono::steady_clock;

// While authenticating, the bus library reads ahead and could swallow the header of the first message, whose size would
// then go unchecked. So it is fed line by line through a pair of sockets of its own; afterwards the client's socket
// takes the place of the end it reads from.
struct FedBus {
  OwnedBus bus;
  int input = -1;  // the library's end; belongs to the bus
  UniqueDescriptor feed;
};

FedBus startFedBus(int socket) {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) return {};
  UniqueDescriptor input(ends[0]);
  UniqueDescriptor feed(ends[1]);
  UniqueDescriptor output(::fcntl(socket, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  sd_bus* raw = nullptr;
  if (!output.valid() || sd_bus_new(&raw) < 0) return {};
  OwnedBus bus(raw);
  if (sd_bus_set_fd(raw, input.get(), output.get()) < 0) return {};
  const int libraryEnd = input.release();
  static_cast<void>(output.release());

  sd_id128_t identifier{};
  const bool started = sd_id128_randomize(&identifier) >= 0 && sd_bus_set_server(raw, 1, identifier) >= 0 &&
                       sd_bus_set_anonymous(raw, 1) >= 0 && sd_bus_start(raw) >= 0;
  if (!started) return {};
  return {std::move(bus), libraryEnd, std::move(feed)};
}

// Waits until there is something to read. False when the time is over.
bool waitForInput(int socket, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    pollfd input{.fd = socket, .events = POLLIN, .revents = 0};
    const int ready = ::poll(&input, 1, static_cast<int>(left));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

// Hands what has arrived to the library, to the end of the line at most: the line that ends authentication must not be
// followed by anything. False when nothing more will come.
bool forwardLine(int socket, int feed) {
  std::array<char, 512> bytes{};
  const ssize_t seen = ::recv(socket, bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
  if (seen < 0) return errno == EAGAIN || errno == EINTR;
  if (seen == 0) return false;
  auto* const end = bytes.data() + seen;
  auto* const lineFeed = std::find(bytes.data(), end, '\n');
  const auto length = static_cast<std::size_t>((lineFeed == end ? end : lineFeed + 1) - bytes.data());
  const ssize_t taken = ::recv(socket, bytes.data(), length, MSG_DONTWAIT);
  return taken > 0 && ::send(feed, bytes.data(), static_cast<std::size_t>(taken), MSG_NOSIGNAL) == taken;
}

bool processAll(sd_bus* bus) {
  int status = 1;
  while (status > 0 && sd_bus_is_ready(bus) <= 0) status = sd_bus_process(bus, nullptr);
  return status >= 0;
}

}  // namespace

OwnedBus openServerBus(int socket, std::chrono::milliseconds patience) {
  const Clock::time_point deadline = Clock::now() + patience;
  FedBus fed = startFedBus(socket);
  if (!fed.bus) return nullptr;
  while (sd_bus_is_ready(fed.bus.get()) <= 0) {
    const bool goesOn =
        waitForInput(socket, deadline) && forwardLine(socket, fed.feed.get()) && processAll(fed.bus.get());
    if (!goesOn) return nullptr;
  }
  if (::dup3(socket, fed.input, O_CLOEXEC) < 0) return nullptr;
  return std::move(fed.bus);
}

}  // namespace halvo::sim
