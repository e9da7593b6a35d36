#include "HalvoHelperXPC/ReplyParsers.h"

#include "platform/JSONObject.h"

namespace halvo {
namespace {

// The member `key` of the JSON object in `reply` if it is of type T.
template <typename T>
std::optional<T> member(const std::optional<std::string>& reply, std::string_view key) {
  if (!reply) return std::nullopt;
  const auto object = halvoReadJSONObject(*reply);
  if (!object) return std::nullopt;
  const auto found = object->find(key);
  if (found == object->end()) return std::nullopt;
  const T* value = std::get_if<T>(&found->second);
  return value == nullptr ? std::nullopt : std::optional(*value);
}

}  // namespace

bool halvoHelperXPCVersionMatches(std::int64_t sent, std::int64_t helper) { return sent == helper; }

bool halvoHelperSupportsAuthorization(std::optional<std::int64_t> helperVersion) {
  // Not kHalvoHelperXPCVersion: the methods came with version 6 and stay there when the version is raised.
  return helperVersion.value_or(0) >= 6;
}

bool halvoIsUnauthorizedReply(const std::optional<std::string>& reply) {
  return member<std::string>(reply, "code") == "unauthorized";
}

std::optional<std::int64_t> halvoParseHelperVersion(const std::optional<std::string>& reply) {
  return member<std::int64_t>(reply, "helper_version");
}

}  // namespace halvo
