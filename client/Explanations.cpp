#include "client/Explanations.h"

#include <Security/Security.h>

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

constexpr std::array<Row, 6> kCodes = {{
    {"audio_active",
     "Audio is running and would be interrupted. Stop it, or try again with --accept-audio-interruption. Nothing was "
     "changed."},
    {"rolled_back",
     "The installer failed, and what had been saved of the previous installation was copied back. /var/log/install.log "
     "says why it failed. The helper's log: "},
    {"install_failed", "The install failed. /var/log/install.log says why. The helper's log: "},
    {"incomplete", "Something could not be removed. Try again, or remove by hand what the log names: "},
    {"downgrade", "The manifest names an older driver than the installed one. Nothing was changed. "},
    {"untrusted_package", "The package was refused and nothing was changed. "},
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

std::string versionsOf(const std::string& reply) {
  const std::string incoming = member(reply, "incoming");
  const std::string versions = "Installed: " + member(reply, "installed") + "; in the manifest: " + incoming + ".";
  return incoming == "0" ? versions + " A manifest that names no \"driver_version\" counts as 0." : versions;
}

// What the general text of a code needs from the rest of the reply.
std::string detailFor(std::string_view code, const std::string& reply) {
  if (code == "rolled_back" || code == "install_failed" || code == "incomplete") return member(reply, "log_path");
  if (code == "downgrade") return versionsOf(reply);
  if (code != "untrusted_package") return {};
  const std::string reason = member(reply, "reason");
  const std::string_view known = textFor(kPackageReasons, reason);
  return known.empty() ? "The reason is " + reason + "." : std::string(known);
}

// Each of the three needs something else of the person.
Explanation explainUnauthorized(const CommandLine& command) {
  if (command.legacy) {
    return {ExitStatus::unauthorized,
            "A legacy request carries no approval, and the helper never acts on one. Make it without \"legacy\"."};
  }
  if (command.withoutGrant) {
    return {ExitStatus::unauthorized,
            "Nobody approved the authorization that was sent, so the helper did nothing. Make the request without "
            "--without-grant."};
  }
  return {
      ExitStatus::unauthorized,
      "The helper did not find an administrator's approval and did nothing. An approval is good for five minutes: "
      "try again. If that does not help, look for the helper's line \"admin right\" in the system log: with sound=0 "
      "it refuses every change."};
}

std::string_view adviceAfterInterruption(const CommandLine& command) {
  switch (command.verb) {
    case Verb::ping:
    case Verb::users:
      return "Try again.";
    case Verb::install:
      // The system's installer outlives a helper that ends under it.
      return "It is unknown whether the request was begun. The last lines of /var/log/halvo-install.log say how far it "
             "came. Wait until no process called installer runs, or restart the Mac, before you install again.";
    case Verb::prepareRemoval:
      return "It is unknown whether the request was begun. The last lines of /var/log/halvo-uninstall.log say how far "
             "it came. What is gone may be removed again: make the request once more.";
    case Verb::removeBundle:
      return "It is unknown whether the request was begun. Look whether the folder is still there, and make the "
             "request once more if it is.";
    case Verb::finalize:
      return "It is unknown whether the request was begun. Where \"halvo-app ping\" is still answered, make the "
             "request once more.";
  }
  return {};  // Not reached: there is no other verb.
}

std::string_view adviceAfterTimeOut(const CommandLine& command) {
  switch (command.verb) {
    case Verb::ping:
    case Verb::users:
      return "Try again, or wait longer.";
    case Verb::install:
      return "What it has begun, it finishes: the last lines of /var/log/halvo-install.log say how far it is.";
    case Verb::prepareRemoval:
      return "What it has begun, it finishes: the last lines of /var/log/halvo-uninstall.log say how far it is.";
    case Verb::removeBundle:
      return "What it has begun, it finishes: look whether the folder is still there.";
    case Verb::finalize:
      return "What it has begun, it finishes: look whether \"halvo-app ping\" is still answered.";
  }
  return {};
}

}  // namespace

Explanation explainTextReply(const CommandLine& command, const std::string& reply) {
  const std::string_view code = codeOf(reply);
  // The replies of ping and users have no code: there is nothing to refuse.
  if (code == "ok" || reply.starts_with("{\"ok\":true") || reply.starts_with("{\"uids\":[")) {
    return {ExitStatus::success, {}};
  }
  if (code == "unauthorized") return explainUnauthorized(command);
  const std::string_view known = textFor(kCodes, code);
  if (known.empty()) {
    return {ExitStatus::refused,
            "The helper answered something that this program does not know. What it did, its logs say: "
            "/var/log/halvo-install.log and /var/log/halvo-uninstall.log. Update the application."};
  }
  return {ExitStatus::refused, std::string(known) + detailFor(code, reply)};
}

Explanation explainBoolReply(const CommandLine& command, bool succeeded) {
  if (succeeded) return {ExitStatus::success, {}};
  if (command.legacy || command.verb == Verb::finalize) return explainUnauthorized(command);
  return {ExitStatus::refused,
          "The helper did not remove it, or not all of it. The path must be absolute, without \"..\", and lead to a "
          "Halvo.app that holds the product's programs: the system log names a path that was refused. Without such a "
          "line the approval was missing or older than five minutes, or something in the folder could not be removed."};
}

Explanation explainNoReply(const CommandLine& command) { return explainUnauthorized(command); }

Explanation explainFailure(const CommandLine& command, const ServiceFailure& failure) {
  const std::string inBrackets = " (" + visibleText(failure.description) + ") ";
  switch (failure.kind) {
    case ServiceFailure::Kind::unreachable:
      return {ExitStatus::unreachable,
              "The helper cannot be reached, or does not take this program for the application." + inBrackets +
                  "Open the Halvo application, which registers its helper, allow the helper in System Settings, Login "
                  "Items, and try again."};
    case ServiceFailure::Kind::interrupted:
      return {ExitStatus::interrupted,
              "The helper ended before it replied." + inBrackets + std::string(adviceAfterInterruption(command))};
    case ServiceFailure::Kind::rejected:
      return {ExitStatus::refused, "The helper could not take the request." + inBrackets +
                                       "Application and helper may be of different versions: update both."};
  }
  return {ExitStatus::unreachable, failure.description};  // Not reached: there is no other kind.
}

Explanation explainTimeOut(const CommandLine& command) {
  const auto seconds = command.timeout.value_or(std::chrono::seconds::zero()).count();
  return {ExitStatus::noReplyInTime, "The helper did not reply within the " + std::to_string(seconds) +
                                         " s that --timeout gives it. " + std::string(adviceAfterTimeOut(command))};
}

Explanation explainOldHelper() {
  return {ExitStatus::helperTooOld,
          "The installed helper is too old for this request. Open the new application, which registers its own helper, "
          "and try again."};
}

Explanation explainMissingApproval(std::int32_t status) {
  const std::string nothingChanged = " (status " + std::to_string(status) + "). Nothing was changed. ";
  const auto because = [&](const std::string& reason, const std::string& advice) {
    return Explanation{ExitStatus::unauthorized, reason + nothingChanged + advice};
  };
  switch (status) {
    case errAuthorizationCanceled:
      return because("The question for an administrator's approval was cancelled",
                     "Try again and approve when the system asks.");
    case errAuthorizationDenied:
      return because("An administrator has to approve this, and none did",
                     "Try again with the name and password of an administrator.");
    case errAuthorizationInteractionNotAllowed:
      return because("An administrator has to approve this, and the system cannot ask for it in this session",
                     "Try again in a window of a user who is logged in at the screen.");
    default:
      return because("The system's authorization service could not be used",
                     "Try again; if that does not help, restart the Mac.");
  }
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
  return {};  // Not reached: there is no other verb.
}

std::string waitingNotice(const CommandLine& command) {
  const std::string log = progressLogOf(command);
  // The helper holds a change back while another one runs, and neither tells so nor writes a log meanwhile.
  const std::string notice =
      "Waiting for the helper; interrupting this does not stop it. It makes one change at a time, and does not tell "
      "whether another one comes first.";
  return log.empty() ? notice : notice + " New lines of " + log + ":";
}

}  // namespace halvo
