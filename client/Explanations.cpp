#include "client/Explanations.h"

#include <Security/Security.h>

#include <string_view>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/RefusalText.h"
#include "client/VisibleText.h"

namespace halvo {
namespace {

// The text between {"code":" and the next quote.
std::string_view codeOf(std::string_view reply) {
  constexpr std::string_view kBegin = "{\"code\":\"";
  if (!reply.starts_with(kBegin)) return {};
  reply.remove_prefix(kBegin.size());
  return reply.substr(0, reply.find('"'));
}

// Each of the three needs something else of the person.
Explanation explainUnauthorized(const CommandLine& command, const Seen& seen) {
  if (command.legacy) {
    return {ExitStatus::unauthorized,
            "A legacy request carries no approval, and the helper never acts on one. Make it without \"legacy\"."};
  }
  if (command.withoutGrant) {
    return {ExitStatus::unauthorized,
            "Nobody approved the authorization that was sent, so the helper did nothing. Make the request without "
            "--without-grant."};
  }
  if (seen.diskIsFull) {
    return {
        ExitStatus::unauthorized,
        "The disk is full, and the system needs room to check an approval: the helper did nothing. Make room and try "
        "again."};
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
    case Verb::doctor:
      return "Try again.";
    case Verb::install:
      // The system's installer outlives a helper that ends under it.
      return "It is unknown whether the request was begun. The last lines of /var/log/halvo-install.log say how far it "
             "came. Wait until no process called installer runs, or restart the Mac, before you install again.";
    case Verb::prepareRemoval:
    case Verb::uninstall:
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
    case Verb::doctor:
      return "Try again, or wait longer.";
    case Verb::install:
      return "What it has begun, it finishes: the last lines of /var/log/halvo-install.log say how far it is.";
    case Verb::prepareRemoval:
    case Verb::uninstall:
      return "What it has begun, it finishes: the last lines of /var/log/halvo-uninstall.log say how far it is.";
    case Verb::removeBundle:
      return "What it has begun, it finishes: look whether the folder is still there.";
    case Verb::finalize:
      return "What it has begun, it finishes: look whether \"halvo-app ping\" is still answered.";
  }
  return {};  // Not reached: there is no other verb.
}

}  // namespace

Explanation explainTextReply(const CommandLine& command, const std::string& reply, const Seen& seen) {
  const std::string_view code = codeOf(reply);
  // The replies of ping and users have no code: there is nothing to refuse.
  if (code == "ok" || reply.starts_with("{\"ok\":true") || reply.starts_with("{\"uids\":[")) {
    return {ExitStatus::success, {}};
  }
  if (code == "unauthorized") return explainUnauthorized(command, seen);
  const std::string refusal = refusalText(code, reply, seen);
  if (!refusal.empty()) return {ExitStatus::refused, refusal};
  return {ExitStatus::refused,
          "The helper answered something that this program does not know. What it did, its logs say: "
          "/var/log/halvo-install.log and /var/log/halvo-uninstall.log. Update the application."};
}

Explanation explainBoolReply(const CommandLine& command, bool succeeded, const Seen& seen) {
  if (succeeded) return {ExitStatus::success, {}};
  const bool nobodyApproved = command.legacy || command.withoutGrant;
  if (nobodyApproved || seen.diskIsFull || command.verb == Verb::finalize) return explainUnauthorized(command, seen);
  if (seen.faultOfBundle) return {ExitStatus::refused, "The helper did not remove it. " + *seen.faultOfBundle};
  return {
      ExitStatus::refused,
      "The helper did not remove it, or not all of it: something in the folder is locked, which \"ls -lOR\" shows, or "
      "more than five minutes had passed since the approval when the turn of this request came. Unlock what is "
      "locked and try again."};
}

Explanation explainNoReply(const CommandLine& command) { return explainUnauthorized(command, {}); }

Explanation explainFailure(const CommandLine& command, const ServiceFailure& failure) {
  const std::string inBrackets = " (" + visibleText(failure.description) + ") ";
  switch (failure.kind) {
    case ServiceFailure::Kind::unreachable:
      return {
          ExitStatus::unreachable,
          "The helper cannot be reached, does not take this program for the application, or ended before it "
          "replied. Open the Halvo application, which registers its helper, allow the helper in System Settings, Login "
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

std::string explainEndOfUninstall(const CommandLine& step) {
  switch (step.verb) {
    case Verb::removeBundle:
      return "The uninstall ends here. The system parts are removed; the application and its helper are not.";
    case Verb::finalize:
      return "The uninstall ends here. The system parts and the application are removed; the helper stays registered. "
             "It goes when the application is put back and \"halvo-app finalize\" succeeds.";
    case Verb::prepareRemoval:
      return "The uninstall ends here. The application and its helper stay as they are.";
    // Not reached: an uninstall has no other steps.
    case Verb::ping:
    case Verb::users:
    case Verb::doctor:
    case Verb::install:
    case Verb::uninstall:
      break;
  }
  return {};  // Not reached: there is no other verb.
}

Explanation explainOldHelper() {
  return {ExitStatus::helperTooOld,
          "The installed helper is too old for this request. Open the new application, which registers its own helper, "
          "and try again."};
}

Explanation explainMissingApproval(std::int32_t status, const Seen& seen) {
  const std::string nothingChanged = " (status " + std::to_string(status) + "). Nothing was changed. ";
  const auto because = [&](const std::string& reason, const std::string& advice) {
    return Explanation{ExitStatus::unauthorized, reason + nothingChanged + advice};
  };
  if (seen.diskIsFull && status != errAuthorizationCanceled) {
    return because("The disk is full, and the system needs room to ask for an administrator's approval",
                   "Make room and try again.");
  }
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
      return kInstallLogPath;
    case Verb::prepareRemoval:
    case Verb::uninstall:
      return kUninstallLogPath;
    case Verb::ping:
    case Verb::users:
    case Verb::doctor:
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
