#include "client/Registration.h"

#include "client/VisibleText.h"

namespace halvo {
namespace {

constexpr std::string_view kHelperPropertyList = "com.halvo.helper.plist";

std::string wordFor(DaemonStatus status) {
  switch (status) {
    case DaemonStatus::notRegistered:
      return "not-registered";
    case DaemonStatus::enabled:
      return "enabled";
    case DaemonStatus::requiresApproval:
      return "requires-approval";
    case DaemonStatus::notFound:
      return "not-found";
    case DaemonStatus::unknown:
      return "unknown";
  }
  return {};  // Not reached: there is no other status.
}

Explanation explain(DaemonStatus status) {
  switch (status) {
    case DaemonStatus::enabled:
      return {ExitStatus::success,
              "The helper is registered, and the system starts it for the next request, such as \"halvo-app ping\"."};
    case DaemonStatus::requiresApproval:
      return {ExitStatus::unauthorized,
              "The helper is registered and needs approval in System Settings. An administrator allows Halvo under "
              "General, Login Items; \"halvo-app status --open-settings\" shows the page."};
    case DaemonStatus::notRegistered:
      return {ExitStatus::unreachable, "The helper is not registered. \"halvo-app register\" registers it."};
    case DaemonStatus::notFound:
      return {ExitStatus::unreachable,
              "The system finds no helper in the application that this program lies in. Use the halvo-app inside "
              "Halvo.app; if it is that one, \"halvo-app register\" tells what is missing."};
    case DaemonStatus::unknown:
      return {ExitStatus::unreachable,
              "The system says something about the registration that this program does not know. Look at System "
              "Settings, General, Login Items."};
  }
  return {ExitStatus::unreachable, {}};  // Not reached: there is no other status.
}

RegistrationReport reportOn(DaemonStatus status) { return {wordFor(status), explain(status)}; }

RegistrationReport failed(DaemonStatus status, const std::string& what, const std::string& description) {
  return {wordFor(status),
          {ExitStatus::refused, what + " (" + visibleText(description) +
                                    "). Use the halvo-app inside Halvo.app, in /Applications; if it is that one, "
                                    "install the application again."}};
}

// A registration that waits for approval fails at first, and so does one that was made before: what has come of it, the
// status tells.
RegistrationReport add(const RegistrationService& service) {
  const auto failure = service.add(kHelperPropertyList);
  const DaemonStatus status = service.look(kHelperPropertyList);
  const bool stands = status == DaemonStatus::enabled || status == DaemonStatus::requiresApproval;
  return failure && !stands ? failed(status, "The system did not register the helper", *failure) : reportOn(status);
}

RegistrationReport remove(const RegistrationService& service) {
  if (service.look(kHelperPropertyList) == DaemonStatus::notRegistered) {
    return {wordFor(DaemonStatus::notRegistered),
            {ExitStatus::success, "The helper is not registered: there is nothing to take back."}};
  }
  const auto failure = service.remove(kHelperPropertyList);
  const DaemonStatus status = service.look(kHelperPropertyList);
  if (failure) return failed(status, "The system did not take the registration back", *failure);
  return {wordFor(status),
          {ExitStatus::success,
           "The helper is not registered any more. What the product installed stays; \"halvo-app uninstall\" removes "
           "it, and needs the helper for that: \"halvo-app register\" brings it back."}};
}

}  // namespace

RegistrationReport carryOutRegistration(const RegistrationCommand& command, const RegistrationService& service) {
  if (command.openSettings) service.openSettings();
  switch (command.what) {
    case Registering::add:
      return add(service);
    case Registering::remove:
      return remove(service);
    case Registering::look:
      return reportOn(service.look(kHelperPropertyList));
  }
  return reportOn(DaemonStatus::unknown);  // Not reached: there is no other request.
}

}  // namespace halvo
