#include "sim/harness/AgentMessages.h"

#include <nlohmann/json.hpp>

namespace halvo::sim {
namespace {

using Json = nlohmann::json;

std::string line(const Json& message) { return message.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string toLine(const AgentGreeting& greeting) { return line({{"several_users", greeting.severalUsers}}); }

std::string toLine(const AgentRequest& request) {
  return line({{"id", request.id}, {"user", request.user}, {"argv", request.argv}, {"stdin", request.input}});
}

std::string toLine(const AgentReply& reply) {
  return line({{"id", reply.id}, {"status", reply.status}, {"stdout", reply.out}, {"stderr", reply.err}});
}

std::optional<AgentGreeting> greetingFromLine(std::string_view text) try {
  return AgentGreeting{.severalUsers = Json::parse(text).at("several_users").get<bool>()};
} catch (const Json::exception&) {
  return std::nullopt;
}

std::optional<AgentRequest> agentRequestFromLine(std::string_view text) try {
  const Json message = Json::parse(text);
  AgentRequest request{.id = message.at("id").get<std::int64_t>(),
                       .user = message.at("user").get<uid_t>(),
                       .argv = message.at("argv").get<std::vector<std::string>>(),
                       .input = message.value("stdin", "")};
  if (request.argv.empty()) return std::nullopt;
  return request;
} catch (const Json::exception&) {
  return std::nullopt;
}

std::optional<AgentReply> agentReplyFromLine(std::string_view text) try {
  const Json message = Json::parse(text);
  return AgentReply{.id = message.at("id").get<std::int64_t>(),
                    .status = message.at("status").get<int>(),
                    .out = message.at("stdout").get<std::string>(),
                    .err = message.at("stderr").get<std::string>()};
} catch (const Json::exception&) {
  return std::nullopt;
}

}  // namespace halvo::sim
