#include "sim/transport/ClientLink.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "sim/support/MachinePaths.h"
#include "sim/support/UnixSocket.h"
#include "sim/transport/WireFormat.h"

namespace halvo::sim {
namespace {

ServiceFailure rejected(std::string description) { return {ServiceFailure::Kind::rejected, std::move(description)}; }

const ServiceFailure kClosed{ServiceFailure::Kind::interrupted, "The connection was closed by this program."};

ServiceFailure unreachable(const std::string& machServiceName, int error) {
  return {ServiceFailure::Kind::unreachable,
          "The service " + machServiceName + " cannot be reached: " + std::generic_category().message(error) + "."};
}

}  // namespace

std::optional<ServiceFailure> OutgoingMessage::obstacle() const {
  const bool holdsNul = std::any_of(arguments.texts.begin(), arguments.texts.end(),
                                    [](const std::string& one) { return one.find('\0') != std::string::npos; });
  return holdsNul ? std::optional(rejected("A text with a NUL in it cannot be sent.")) : std::nullopt;
}

OwnedBusMessage OutgoingMessage::encode(sd_bus* bus) const {
  const HalvoHelperMessage& message = halvoMessage(id);
  const std::string& member = wireMessages()[static_cast<std::size_t>(id)].member;
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_method_call(bus, &raw, nullptr, kHelperObject, kHelperInterface, member.c_str()) < 0) {
    return nullptr;
  }
  OwnedBusMessage call(raw);
  if (sd_bus_message_set_expect_reply(raw, expectsReply() ? 1 : 0) < 0) return nullptr;
  if (appendArguments(raw, message, arguments) < 0) return nullptr;
  return call;
}

void OutgoingMessage::deliver(sd_bus_message* answer) const {
  if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
    return fail(rejected(error->message == nullptr ? error->name : error->message));
  }
  const char* json = nullptr;
  int succeeded = 0;
  switch (halvoMessage(id).reply) {
    case ReplyKind::text:
      if (sd_bus_message_read_basic(answer, 's', static_cast<void*>(&json)) > 0) return text(json);
      break;
    case ReplyKind::boolean:
      if (sd_bus_message_read_basic(answer, 'b', &succeeded) > 0) return boolean(succeeded != 0);
      break;
    case ReplyKind::none:
      return;
  }
  fail(rejected("The helper's answer has another form than agreed."));
}

void OutgoingMessage::fail(const ServiceFailure& failure) const {
  if (onFailure) onFailure(failure);
}

ClientLink::ClientLink(std::string machServiceName)
    : machServiceName_(std::move(machServiceName)), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void ClientLink::start() {
  thread_ = std::thread([self = shared_from_this()] { self->run(); });
}

void ClientLink::send(OutgoingMessage message) {
  {
    const std::lock_guard lock(mutex_);
    if (!closed_) {
      queued_.push_back(std::move(message));
      static_cast<void>(::eventfd_write(wake_.get(), 1));
      return;
    }
  }
  message.fail(kClosed);
}

void ClientLink::close() {
  Messages never;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    never.swap(queued_);
    static_cast<void>(::eventfd_write(wake_.get(), 1));
  }
  if (thread_.get_id() != std::this_thread::get_id()) {
    thread_.join();
  } else {
    // Called from an answer: this is the thread, and it ends by itself afterwards.
    thread_.detach();
    failWaiting(kClosed);
  }
  for (const OutgoingMessage& message : never) message.fail(kClosed);
}

void ClientLink::run() {
  for (Messages fresh; takeQueued(fresh); fresh.clear()) {
    transmit(std::move(fresh));
    process();
    waitForWork();
  }
  for (Sent& sent : sent_) sent.slot.reset();
  bus_.reset();
  failWaiting(kClosed);
}

bool ClientLink::takeQueued(Messages& taken) {
  const std::lock_guard lock(mutex_);
  taken.swap(queued_);
  return !closed_;
}

void ClientLink::transmit(Messages messages) {
  for (OutgoingMessage& message : messages) {
    if (const auto obstacle = message.obstacle()) {
      message.fail(*obstacle);
      continue;
    }
    if (const int error = bus_ ? 0 : connect(); error != 0) {
      message.fail(unreachable(machServiceName_, error));
      continue;
    }
    sent_.push_back({*this, std::move(message), nullptr});
    if (const int status = transmitNewest(); status < 0) disconnect(-status);
  }
}

int ClientLink::transmitNewest() {
  Sent& sent = sent_.back();
  const OwnedBusMessage call = sent.message.encode(bus_.get());
  if (!call) return -EINVAL;
  if (!sent.message.expectsReply()) return sd_bus_send(bus_.get(), call.get(), nullptr);
  // An installation takes as long as it takes.
  constexpr std::uint64_t kNoTimeOut = UINT64_MAX;
  sd_bus_slot* slot = nullptr;
  const int status = sd_bus_call_async(bus_.get(), &slot, call.get(), onAnswer, &sent, kNoTimeOut);
  sent.slot.reset(slot);
  return status;
}

int ClientLink::connect() {
  // While the helper has as many clients as it takes, connecting waits; it must not wait for ever.
  UniqueDescriptor socket =
      connectTo(machinePaths().machServices / machServiceName_, SOCK_STREAM, std::chrono::seconds(25));
  if (!socket.valid()) return errno;
  sd_bus* raw = nullptr;
  int status = sd_bus_new(&raw);
  OwnedBus bus(raw);
  if (status >= 0) status = sd_bus_set_fd(raw, socket.get(), socket.get());
  if (status >= 0) static_cast<void>(socket.release());
  if (status >= 0) status = sd_bus_start(raw);
  if (status < 0) return -status;
  bus_ = std::move(bus);
  greeted_ = false;
  return 0;
}

void ClientLink::process() {
  int status = 1;
  while (bus_ && status > 0) {
    status = sd_bus_process(bus_.get(), nullptr);
    if (sd_bus_is_ready(bus_.get()) > 0) greeted_ = true;
    if (status < 0 || sd_bus_is_open(bus_.get()) <= 0) return disconnect(status < 0 ? -status : ECONNRESET);
  }
  dropWrittenOneWays();
}

// Once nothing is left to be written, the messages without reply are on their way, and that is all they report.
void ClientLink::dropWrittenOneWays() {
  if (!bus_ || !greeted_ || (sd_bus_get_events(bus_.get()) & POLLOUT) != 0) return;
  std::erase_if(sent_, [](const Sent& sent) { return !sent.message.expectsReply(); });
}

int ClientLink::onAnswer(sd_bus_message* answer, void* sent, sd_bus_error* /*error*/) {
  ClientLink& self = static_cast<Sent*>(sent)->link;
  // While a connection ends, the library answers what is open with errors of its own; disconnect() knows what to say.
  if (sd_bus_is_open(self.bus_.get()) <= 0) return 0;
  const auto found =
      std::find_if(self.sent_.begin(), self.sent_.end(), [sent](const Sent& one) { return &one == sent; });
  std::list<Sent> answered;
  answered.splice(answered.begin(), self.sent_, found);
  answered.front().message.deliver(answer);
  return 1;
}

void ClientLink::disconnect(int error) {
  for (Sent& sent : sent_) sent.slot.reset();
  bus_.reset();
  if (greeted_)
    return failWaiting({ServiceFailure::Kind::interrupted, "The connection to the helper was interrupted."});
  const bool closed = error == ECONNRESET || error == EPIPE || error == ENOTCONN;
  failWaiting(closed ? ServiceFailure{ServiceFailure::Kind::unreachable,
                                      "The helper closed the connection without an answer: it does not admit this "
                                      "program."}
                     : unreachable(machServiceName_, error));
}

void ClientLink::failWaiting(const ServiceFailure& failure) {
  std::list<Sent> failed;
  failed.swap(sent_);
  for (const Sent& sent : failed) sent.message.fail(failure);
}

void ClientLink::waitForWork() {
  std::array<pollfd, 2> events{pollfd{wake_.get(), POLLIN, 0}, pollfd{-1, 0, 0}};
  int timeout = -1;
  if (bus_) {
    events[1] = {sd_bus_get_fd(bus_.get()), static_cast<short>(sd_bus_get_events(bus_.get())), 0};
    std::uint64_t deadline = UINT64_MAX;
    // Only the beginning of a connection has a deadline.
    if (sd_bus_get_timeout(bus_.get(), &deadline) >= 0 && deadline != UINT64_MAX) timeout = 1000;
  }
  static_cast<void>(::poll(events.data(), events.size(), timeout));
  eventfd_t ignored = 0;
  static_cast<void>(::eventfd_read(wake_.get(), &ignored));
}

}  // namespace halvo::sim
