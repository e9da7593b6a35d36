#include "client/Explanations.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "client/VisibleText.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

struct Row {
  std::string_view key;
  std::string_view text;
};

constexpr std::array<Row, 8> kPackageReasons = {{
    {"unreadable", "The system could not read the package. Download it again."},
    {"unsigned", "The package is not signed. Use a package from the maker."},
    {"not_notarized", "Apple has not notarised the package. Use a released package."},
    {"not_developer_id", "The package is not signed as a Developer ID installer. Use a released package."},
    {"wrong_team", "The package is signed by somebody else. Use a package from the maker."},
    {"chain_truncated", "The package's certificate chain is incomplete. Use a released package."},
    {"unknown_authority", "The package's certificates do not come from Apple. Use a package from the maker."},
    {"staging_failed",
     "The helper could not take the package in: it must be a regular file, no link, of at most 256 MiB, and the disk "
     "must have room for a copy. Check the path and try again."},
}};

constexpr std::array<Row, 7> kCodes = {{
    {"audio_active",
     "Audio is running and would be interrupted. Stop it, or try again with --accept-audio-interruption. Nothing was "
     "changed."},
    {"rolled_back", "The installer failed and the previous installation was copied back. The log says more: "},
    {"install_failed", "The install failed. The log says more: "},
    {"incomplete", "Something could not be removed. The log names it: "},
    {"downgrade", "The package holds an older driver than the installed one. Nothing was changed. "},
    {"untrusted_package", "The package was refused and nothing was changed. "},
    {"unauthorized",
     "The helper did not find an administrator's approval. Approve the request when asked, and use a request that "
     "carries the approval."},
}};

template <std::size_t N>
std::string_view textFor(const std::array<Row, N>& rows, std::string_view key) {
  const auto found = std::ranges::find(rows, key, &Row::key);
  return found == rows.end() ? std::string_view() : found->text;
}

// The text between {"code":" and the next quote.
std::string_view codeOf(std::string_view reply) {
  constexpr std::string_view kBegin = "{\"code\":\"";
  if (!reply.starts_with(kBegin)) return {};
  reply.remove_prefix(kBegin.size());
  return reply.substr(0, reply.find('"'));
}

std::string member(const std::string& reply, std::string_view key) {
  const auto object = halvoReadJSONObject(reply);
  if (!object) return "?";
  const auto found = object->find(key);
  const auto* text = found == object->end() ? nullptr : std::get_if<std::string>(&found->second);
  return text == nullptr ? "?" : visibleText(*text);
}

// What the general text of a code needs from the rest of the reply.
std::string detailFor(std::string_view code, const std::string& reply) {
  if (code == "rolled_back" || code == "install_failed" || code == "incomplete") return member(reply, "log_path");
  if (code == "downgrade") {
    return "Installed: " + member(reply, "installed") + "; in the package: " + member(reply, "incoming") + ".";
  }
  if (code != "untrusted_package") return {};
  const std::string reason = member(reply, "reason");
  const std::string_view known = textFor(kPackageReasons, reason);
  return known.empty() ? "The reason is " + reason + "." : std::string(known);
}

Explanation explainUnauthorized() { return {ExitStatus::unauthorized, std::string(textFor(kCodes, "unauthorized"))}; }

}  // namespace

Explanation explainTextReply(const std::string& reply) {
  const std::string_view code = codeOf(reply);
  // The replies of ping and users have no code: there is nothing to refuse.
  if (code == "ok" || reply.starts_with("{\"ok\":true") || reply.starts_with("{\"uids\":[")) {
    return {ExitStatus::success, {}};
  }
  if (code == "unauthorized") return explainUnauthorized();
  const std::string_view known = textFor(kCodes, code);
  if (known.empty()) {
    return {ExitStatus::refused, "The helper answered something that this program does not know. Update it."};
  }
  return {ExitStatus::refused, std::string(known) + detailFor(code, reply)};
}

Explanation explainBoolReply(const CommandLine& command, bool succeeded) {
  if (succeeded) return {ExitStatus::success, {}};
  if (command.legacy || command.verb == Verb::finalize) return explainUnauthorized();
  return {ExitStatus::refused,
          "The helper did not remove it. The path must be absolute, without \"..\", and lead to a Halvo.app that holds "
          "the product's programs; an administrator must have approved. The system log says which of these failed."};
}

Explanation explainNoReply() { return explainUnauthorized(); }

Explanation explainFailure(const ServiceFailure& failure) {
  const std::string inBrackets = " (" + visibleText(failure.description) + ") ";
  switch (failure.kind) {
    case ServiceFailure::Kind::unreachable:
      return {ExitStatus::unreachable,
              "The helper cannot be reached, or does not take this program for the application." + inBrackets +
                  "Open the Halvo application, which registers its helper, and try again."};
    case ServiceFailure::Kind::interrupted:
      return {ExitStatus::interrupted, "The helper ended before it replied." + inBrackets +
                                           "Ask again; an install that was running may have to be repeated."};
    case ServiceFailure::Kind::rejected:
      return {ExitStatus::refused, "The helper could not take the request." + inBrackets +
                                       "Application and helper may be of different versions: update both."};
  }
  return {ExitStatus::unreachable, failure.description};
}

Explanation explainOldHelper() {
  return {ExitStatus::helperTooOld,
          "The installed helper is too old for this request. Open the new application, which registers its own helper, "
          "and try again."};
}

Explanation explainMissingApproval(std::int32_t status) {
  return {ExitStatus::unauthorized, "An administrator has to approve this, and none did (status " +
                                        std::to_string(status) +
                                        "). Nothing was asked of the helper. Try again and approve when the system "
                                        "asks."};
}

std::string progressLogOf(const CommandLine& command) {
  switch (command.verb) {
    case Verb::install:
      return "/var/log/halvo-install.log";
    case Verb::prepareRemoval:
      return "/var/log/halvo-uninstall.log";
    case Verb::ping:
    case Verb::users:
    case Verb::removeBundle:
    case Verb::finalize:
      return {};
  }
  return {};
}

std::string waitingNotice(const CommandLine& command) {
  const std::string log = progressLogOf(command);
  const std::string notice = "Waiting for the helper; interrupting this does not stop it.";
  return log.empty() ? notice : notice + " New lines of " + log + ":";
}

}  // namespace halvo
