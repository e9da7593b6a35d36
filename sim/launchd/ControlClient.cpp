#include "sim/launchd/ControlClient.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/UnixSocket.h"

namespace halvo::sim {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ControlRequest, verb, arguments)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ControlReply, status, text)

namespace {

using Json = nlohmann::json;

std::string textOf(const Json& message) { return message.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string reason(int error) { return std::generic_category().message(error); }

bool sendRequest(int socket, std::string request, const ChildStreams* streams) {
  iovec bytes{request.data(), request.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(kPassedStreams * sizeof(int))> extra{};
  msghdr message{};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  if (streams != nullptr) {
    const std::array<int, kPassedStreams> descriptors = {streams->in, streams->out, streams->err};
    message.msg_control = extra.data();
    message.msg_controllen = extra.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptors);
    std::memcpy(CMSG_DATA(header), descriptors.data(), sizeof descriptors);
  }
  return ::sendmsg(socket, &message, MSG_NOSIGNAL) >= 0;
}

std::optional<ControlReply> receiveReply(int socket) try {
  std::string received(kMaxControlMessage, '\0');
  ssize_t count = 0;
  do count = ::recv(socket, received.data(), received.size(), 0);
  while (count < 0 && errno == EINTR);
  if (count <= 0) return std::nullopt;
  received.resize(static_cast<std::size_t>(count));
  return Json::parse(received).get<ControlReply>();
} catch (const Json::exception&) {
  return std::nullopt;
}

}  // namespace

std::string toText(const ControlReply& reply) { return textOf(reply); }

std::optional<ControlRequest> requestFromText(std::string_view received) try {
  return Json::parse(received).get<ControlRequest>();
} catch (const Json::exception&) {
  return std::nullopt;
}

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

ControlReply ControlClient::submitService(const std::string& plistPath) const { return ask({"submit", {plistPath}}); }

ControlReply ControlClient::registrationOf(const std::string& plistPath) const {
  return ask({"registration", {plistPath}});
}

std::optional<std::string> ControlClient::unregisterService(const std::string& plistName) const {
  const ControlReply reply = ask({"unregister", {plistName}});
  if (reply.status == 0) return std::nullopt;
  return "The operation couldn’t be completed. (" + reply.text + ")";
}

std::optional<int> ControlClient::run(uid_t user, const std::vector<std::string>& command,
                                      const ChildStreams& streams) const {
  ControlRequest request{"run", {std::to_string(user)}};
  request.arguments.insert(request.arguments.end(), command.begin(), command.end());
  const ControlReply reply = ask(request, &streams);
  return reply.status == 0 ? std::optional(std::stoi(reply.text)) : std::nullopt;
}

ControlReply ControlClient::ask(const ControlRequest& request, const ChildStreams* streams) const {
  const UniqueDescriptor socket = connectTo(socket_, SOCK_SEQPACKET);
  if (!socket.valid()) return {kLaunchdUnreachable, "launchd cannot be reached: " + reason(errno)};
  if (!sendRequest(socket.get(), textOf(request), streams)) {
    return {kLaunchdUnreachable, "launchd hung up: " + reason(errno)};
  }
  return receiveReply(socket.get()).value_or(ControlReply{kLaunchdUnreachable, "launchd ended without an answer"});
}

}  // namespace halvo::sim
