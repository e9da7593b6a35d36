#include "HalvoHelperXPC/Constants.h"
#include "HalvoHelperXPC/ReplyParsers.h"
#include "client/doctor/Findings.h"

namespace halvo {
namespace {

constexpr const char* kEndTheHelper = "end it with \"sudo killall halvo-helper\", unless an install or a removal runs";

Finding notAnswering(const Service& service) {
  const std::string explanation = service.explanation.empty() ? "" : " (" + service.explanation + ")";
  if (service.state == ServiceState::silent) {
    return {
        "service-silent", "The helper did not reply in time.",
        std::string("It may be stopped, or the Mac be very busy. Try again with a longer --timeout; if that does not "
                    "help, ") +
            kEndTheHelper + ": the next request starts it anew."};
  }
  if (service.state == ServiceState::strange) {
    return {"service-strange", "The helper gave a reply that this program does not know" + explanation + ".",
            "Application and helper are of different versions, or something else answers in its place. Put the newest "
            "application into /Applications and open it, which registers its own helper."};
  }
  return {
      "service-unreachable", "The helper cannot be reached" + explanation + ".",
      "It is not registered or not allowed to start, or does not take this program for the application. Open the "
      "Halvo application, which registers it, and allow it in System Settings, Login Items. Its lines in the system "
      "log tell whom it refused."};
}

std::string theRight() { return "The right " + std::string(kHalvoAdminRight); }

}  // namespace

Findings judgeService(const Examination& seen) {
  const Service& service = seen.service;
  if (service.state != ServiceState::answers) return {notAnswering(service)};
  Findings found;
  const std::int64_t version = service.helperVersion.value_or(0);
  if (!halvoHelperXPCVersionMatches(kHalvoHelperXPCVersion, version)) {
    found.push_back({"helper-version",
                     "The helper speaks version " + std::to_string(version) +
                         " of the protocol, this program version " + std::to_string(kHalvoHelperXPCVersion) + ".",
                     "Application and helper are of different versions. Put the newest application into /Applications "
                     "and open it, which registers its own helper."});
  }
  if (!service.graphicalUsers) {
    found.push_back({"users-unknown", "The helper did not tell who has a graphical session.",
                     "It may have ended meanwhile, or wait for a tool of the system. Run doctor again."});
  }
  return found;
}

Findings judgeRight(const Examination& seen) {
  switch (seen.rightAfter) {
    case RightState::missing:
      return {{"right-missing", theRight() + " is missing, or cannot be read.",
               std::string("Without it the helper refuses every change. It writes the right whenever it starts: ") +
                   kEndTheHelper + ", and run doctor again."}};
    case RightState::unsound:
      return {{"right-unsound", theRight() + " is not as the helper writes it.",
               std::string("A helper that finds it so refuses every change. Look for software that rewrites "
                           "authorization rights. The helper writes it anew whenever it starts: ") +
                   kEndTheHelper + ", and run doctor again."}};
    case RightState::sound:
      break;
  }
  if (seen.rightBefore != RightState::unsound) return {};
  return {{"right-repaired", theRight() + " was not as the helper writes it, until it was started by this question.",
           "The helper has put it right. If this comes again, look for software that rewrites authorization rights."}};
}

}  // namespace halvo
