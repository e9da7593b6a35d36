#include "sim/platform/service/FedBus.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

namespace halvo::sim {
namespace {

// Called for every whole message, before it is handled.
int noteMessage(sd_bus_message* /*message*/, void* tookMessage, sd_bus_error* /*error*/) {
  *static_cast<bool*>(tookMessage) = true;
  return 0;
}

bool startServing(sd_bus* bus) {
  sd_id128_t identifier{};
  return sd_id128_randomize(&identifier) >= 0 && sd_bus_set_server(bus, 1, identifier) >= 0 &&
         sd_bus_set_anonymous(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
}

}  // namespace

FedBus::FedBus(OwnedBus bus, UniqueDescriptor feed) : bus_(std::move(bus)), feed_(std::move(feed)) {}

std::optional<FedBus> FedBus::start(int socket) {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) return std::nullopt;
  UniqueDescriptor input(ends[0]);
  UniqueDescriptor feed(ends[1]);
  UniqueDescriptor output(::fcntl(socket, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  sd_bus* raw = nullptr;
  if (!output.valid() || sd_bus_new(&raw) < 0) return std::nullopt;
  FedBus fed(OwnedBus(raw), std::move(feed));
  if (sd_bus_set_fd(raw, input.get(), output.get()) < 0) return std::nullopt;
  // Now the library's.
  static_cast<void>(input.release());
  static_cast<void>(output.release());
  if (sd_bus_add_filter(raw, nullptr, noteMessage, fed.tookMessage_.get()) < 0) return std::nullopt;
  if (!startServing(raw)) return std::nullopt;
  return fed;
}

bool FedBus::authenticate(ClientStream& stream, std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (sd_bus_is_ready(bus_.get()) <= 0) {
    if (stream.bytes().empty() && !stream.readMore(deadline)) return false;
    // Line by line: the library reads ahead, and the last line may be followed by the first message.
    const std::string_view bytes = stream.bytes();
    const std::size_t line = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    if (!handOver(bytes.substr(0, line))) return false;
    stream.take(line);
    int status = 1;
    while (status > 0 && sd_bus_is_ready(bus_.get()) <= 0) status = sd_bus_process(bus_.get(), nullptr);
    if (status < 0) return false;
  }
  return true;
}

bool FedBus::feed(std::string_view bytes) {
  if (!handOver(bytes)) return false;
  int status = 1;
  // Once it has taken the message, there is nothing more for it to read.
  while (status > 0 && !*tookMessage_) status = sd_bus_process(bus_.get(), nullptr);
  return status >= 0 && sd_bus_flush(bus_.get()) >= 0;
}

bool FedBus::handOver(std::string_view bytes) {
  // The library empties its end every time, so there is always room.
  return ::send(feed_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool FedBus::tookMessage() { return std::exchange(*tookMessage_, false); }

}  // namespace halvo::sim
