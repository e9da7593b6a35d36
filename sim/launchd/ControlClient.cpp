#include "sim/launchd/ControlClient.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/launchd/ControlMessages.h"
#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

std::string reason(int error) { return std::generic_category().message(error); }

// A socket's address holds about a hundred bytes, and the path of a machine's folder may be longer: the folder is named
// by a descriptor instead.
UniqueDescriptor connectTo(const std::filesystem::path& name) {
  const UniqueDescriptor folder(::open(name.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder.valid()) return {};
  const std::string viaFolder = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name.filename().string();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (viaFolder.size() >= sizeof address.sun_path) return {};
  std::memcpy(address.sun_path, viaFolder.c_str(), viaFolder.size() + 1);
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.valid()) return {};
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return {};
  return socket;
}

// The first byte takes the descriptors along.
bool sendWith(int socket, std::string_view byte, const CommandStreams& streams) {
  const std::array<int, kCommandStreams> descriptors = {streams.in, streams.out, streams.err};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptors)> extra{};
  std::string copy(byte);
  iovec bytes{copy.data(), copy.size()};
  msghdr message{};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  message.msg_control = extra.data();
  message.msg_controllen = extra.size();
  cmsghdr* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof descriptors);
  std::memcpy(CMSG_DATA(header), descriptors.data(), sizeof descriptors);
  return ::sendmsg(socket, &message, MSG_NOSIGNAL) == 1;
}

bool sendAll(int socket, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::string receiveToEnd(int socket) {
  std::string text;
  std::array<char, 4096> chunk{};
  while (true) {
    const ssize_t count = ::recv(socket, chunk.data(), chunk.size(), 0);
    if (count > 0) {
      text.append(chunk.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      return text;
    }
  }
}

}  // namespace

ControlClient::ControlClient() : ControlClient(stateRoot() / "launchd.sock") {}

ControlClient::ControlClient(std::filesystem::path socket) : socket_(std::move(socket)) {}

ControlReply ControlClient::bootstrap(const std::string& domain, const std::string& plistPath) const {
  return ask({"bootstrap", {domain, plistPath}});
}

ControlReply ControlClient::bootout(const std::string& job) const { return ask({"bootout", {job}}); }

ControlReply ControlClient::print(const std::string& target) const { return ask({"print", {target}}); }

ControlReply ControlClient::killall(const std::string& processName) const { return ask({"killall", {processName}}); }

ControlReply ControlClient::registerService(const std::string& plistPath) const {
  return ask({"register", {plistPath}});
}

std::optional<std::string> ControlClient::unregisterService(const std::string& plistName) const {
  const ControlReply reply = ask({"unregister", {plistName}});
  if (reply.status == 0) return std::nullopt;
  return "The operation couldn’t be completed. (" + reply.text + ")";
}

std::optional<int> ControlClient::run(uid_t user, const std::vector<std::string>& command,
                                      const CommandStreams& streams) const {
  ControlRequest request{"run", {std::to_string(user)}};
  request.arguments.insert(request.arguments.end(), command.begin(), command.end());
  const ControlReply reply = ask(request, &streams);
  return reply.status == 0 ? std::optional(std::stoi(reply.text)) : std::nullopt;
}

ControlReply ControlClient::ask(const ControlRequest& request, const CommandStreams* streams) const {
  const UniqueDescriptor socket = connectTo(socket_);
  if (!socket.valid()) return {kLaunchdUnreachable, "launchd cannot be reached: " + reason(errno)};
  const std::string line = toLine(request);
  std::string_view left = line;
  bool sent = true;
  if (streams != nullptr) {
    sent = sendWith(socket.get(), left.substr(0, 1), *streams);
    left.remove_prefix(1);
  }
  if (!sent || !sendAll(socket.get(), left)) return {kLaunchdUnreachable, "launchd hung up: " + reason(errno)};
  const auto reply = replyFromLine(receiveToEnd(socket.get()));
  return reply.value_or(ControlReply{kLaunchdUnreachable, "launchd ended without an answer"});
}

}  // namespace halvo::sim
