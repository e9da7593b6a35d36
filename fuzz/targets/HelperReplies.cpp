// What the application reads out of the helper's replies.
#include <limits>
#include <string>

#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelperXPC/ReplyParsers.h"
#include "fuzz/support/JSONOracle.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

// Some number that depends on the input.
std::int64_t numberFrom(std::string_view text) {
  std::uint64_t number = 0;
  for (const char c : text) number = number * 257 + static_cast<unsigned char>(c);
  return static_cast<std::int64_t>(number);
}

void checkOwnReply(std::int64_t number) {
  const std::string reply = halvoPingReplyJSON(number);
  require(halvoParseHelperVersion(reply) == 6, "the helper's own reply tells its version");
  require(isWholeNumberOf(memberOfObject(reply, "build_abi"), number), "and its build");
  require(!halvoIsUnauthorizedReply(reply), "and is no refusal");
  require(halvoParseHelperVersion("{\"helper_version\":" + std::to_string(number) + "}") == number, "any fits");
}

void checkVersions(std::optional<std::int64_t> version, std::int64_t other) {
  require(halvoHelperSupportsAuthorization(version) == (version && *version > 5), "authorization came with 6");
  require(halvoHelperXPCVersionMatches(version.value_or(0), other) == (version.value_or(0) == other), "only equals");
}

}  // namespace

void check(std::string_view text) {
  const std::string reply(text);
  const auto version = halvoParseHelperVersion(reply);
  const bool isRefusal = halvoIsUnauthorizedReply(reply);

  require(isWholeNumberOf(memberOfObject(text, "helper_version"), version), "the version is the whole number there");
  require(isRefusal == (asText(memberOfObject(text, "code")) == "unauthorized"), "a refusal says so in its code");
  const std::string padded = "\n" + reply + " \t";
  // A byte order mark is skipped at the very beginning only.
  const bool isMarked = text.starts_with("\xEF\xBB\xBF");
  require(isMarked || halvoParseHelperVersion(padded) == version, "blanks around it do not matter");
  require(!halvoParseHelperVersion("[" + reply + "]") && !halvoIsUnauthorizedReply("[" + reply + "]"), "no object");
  checkOwnReply(numberFrom(text));
  checkVersions(version, numberFrom(text));
}

}  // namespace halvo::fuzz
