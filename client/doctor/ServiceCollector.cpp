#include "client/doctor/ServiceCollector.h"

#include <cstddef>
#include <string_view>
#include <variant>

#include "HalvoHelper/text/Text.h"
#include "client/doctor/ShortText.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

constexpr std::size_t kLongestReplyShown = 100;

std::optional<std::int64_t> numberIn(const std::string& reply, std::string_view key) {
  const auto object = halvoReadJSONObject(reply);
  if (!object) return std::nullopt;
  const auto found = object->find(key);
  const auto* number = found == object->end() ? nullptr : std::get_if<std::int64_t>(&found->second);
  return number == nullptr ? std::nullopt : std::optional(*number);
}

Service fromPing(const Outcome& outcome) {
  if (const auto* failure = std::get_if<ServiceFailure>(&outcome)) {
    return {.state = ServiceState::unreachable, .explanation = shortened(failure->description, kLongestReplyShown)};
  }
  const auto* reply = std::get_if<std::string>(&outcome);
  if (reply == nullptr) return {.state = ServiceState::silent, .explanation = {}};
  const auto version = numberIn(*reply, "helper_version");
  if (!version) return {.state = ServiceState::strange, .explanation = shortened(*reply, kLongestReplyShown)};
  return {.state = ServiceState::answers,
          .explanation = {},
          .helperVersion = version,
          .buildABI = numberIn(*reply, "build_abi")};
}

}  // namespace

std::optional<std::vector<std::int64_t>> usersIn(const std::string& reply) {
  constexpr std::string_view kBegin = "{\"uids\":[";
  constexpr std::string_view kEnd = "]}";
  constexpr std::size_t kMost = 1000;
  std::string_view list = reply;
  if (!list.starts_with(kBegin) || !list.ends_with(kEnd)) return std::nullopt;
  list.remove_prefix(kBegin.size());
  list.remove_suffix(kEnd.size());
  std::vector<std::int64_t> users;
  for (const std::string_view word : halvoSplit(list, [](char32_t c) { return c == ','; })) {
    const auto user = halvoParseDecimal(word);
    if (!user || users.size() == kMost) return std::nullopt;
    users.push_back(*user);
  }
  return users;
}

Service collectService(Conversation& conversation) {
  Service service = fromPing(conversation.askRepeatably(
      [](HalvoHelperProtocol& helper, const TextReply& text, const BoolReply&) { helper.ping(text); }));
  if (service.state != ServiceState::answers) return service;
  const Outcome users = conversation.askRepeatably([](HalvoHelperProtocol& helper, const TextReply& text,
                                                      const BoolReply&) { helper.enumerateActiveGuiDomains(text); });
  if (const auto* reply = std::get_if<std::string>(&users)) service.graphicalUsers = usersIn(*reply);
  return service;
}

}  // namespace halvo
