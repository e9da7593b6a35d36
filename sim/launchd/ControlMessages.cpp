#include "sim/launchd/ControlMessages.h"

#include <nlohmann/json.hpp>

namespace halvo::sim {
namespace {

using Json = nlohmann::json;

std::string line(const Json& message) { return message.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string toLine(const ControlRequest& request) {
  return line({{"verb", request.verb}, {"arguments", request.arguments}});
}

std::string toLine(const ControlReply& reply) { return line({{"status", reply.status}, {"text", reply.text}}); }

std::optional<ControlRequest> requestFromLine(std::string_view text) try {
  const Json message = Json::parse(text);
  return ControlRequest{.verb = message.at("verb").get<std::string>(),
                        .arguments = message.at("arguments").get<std::vector<std::string>>()};
} catch (const Json::exception&) {
  return std::nullopt;
}

std::optional<ControlReply> replyFromLine(std::string_view text) try {
  const Json message = Json::parse(text);
  return ControlReply{.status = message.at("status").get<int>(), .text = message.at("text").get<std::string>()};
} catch (const Json::exception&) {
  return std::nullopt;
}

}  // namespace halvo::sim
