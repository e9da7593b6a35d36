#include "sim/launchd/ControlServer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace halvo::sim {
namespace {

bool peerMayChange(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
  return peer.uid == 0 || peer.uid == ::geteuid();
}

}  // namespace

ControlServer::ControlServer(ListeningSocket socket, Handler handler)
    : socket_(std::move(socket)), handler_(std::move(handler)) {
  ::fcntl(socket_.descriptor(), F_SETFL, O_NONBLOCK);
}

std::vector<int> ControlServer::descriptors() const {
  std::vector<int> descriptors = {socket_.descriptor()};
  // Who waits for an answer has nothing more to say; its hanging up would wake the loop again and again.
  for (const auto& [number, connection] : connections_) {
    if (!connection.waiting) descriptors.push_back(connection.socket.get());
  }
  return descriptors;
}

void ControlServer::serve() {
  acceptAll();
  std::vector<int> numbers;
  for (const auto& [number, connection] : connections_) {
    if (!connection.waiting) numbers.push_back(number);
  }
  for (const int number : numbers) read(number);
}

void ControlServer::acceptAll() {
  while (true) {
    UniqueDescriptor socket(::accept4(socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket.valid()) return;
    const bool mayChange = peerMayChange(socket.get());
    connections_.emplace(nextNumber_++, Connection{std::move(socket), {mayChange, {}}, false});
  }
}

std::optional<std::string> ControlServer::receive(Connection& connection) {
  std::string received(kMaxControlMessage, '\0');
  iovec bytes{received.data(), received.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(kPassedStreams * sizeof(int))> extra{};
  msghdr message{};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  message.msg_control = extra.data();
  message.msg_controllen = extra.size();
  const ssize_t count = ::recvmsg(connection.socket.get(), &message, MSG_CMSG_CLOEXEC);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return std::nullopt;
  received.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  if (count <= 0 || header == nullptr || header->cmsg_type != SCM_RIGHTS) return received;
  std::vector<int> passed((header->cmsg_len - CMSG_LEN(0)) / sizeof(int));
  std::memcpy(passed.data(), CMSG_DATA(header), passed.size() * sizeof(int));
  for (const int descriptor : passed) connection.client.passed.emplace_back(descriptor);
  return received;
}

void ControlServer::read(int number) {
  Connection& connection = connections_.at(number);
  const auto received = receive(connection);
  if (!received) return;
  if (received->empty()) {
    connections_.erase(number);
    return;
  }
  connection.waiting = true;
  const auto request = requestFromText(*received);
  if (!request) return answer(number, {22, "Invalid argument"});
  handler_(*request, connection.client, [this, number](const ControlReply& reply) { answer(number, reply); });
}

void ControlServer::answer(int number, const ControlReply& reply) {
  const auto found = connections_.find(number);
  if (found == connections_.end()) return;
  const std::string text = toText(reply);
  // An answer fits into an empty socket buffer; a client that has gone needs none.
  ::send(found->second.socket.get(), text.data(), text.size(), MSG_NOSIGNAL);
  connections_.erase(found);
}

}  // namespace halvo::sim
