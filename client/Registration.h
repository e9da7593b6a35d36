// Registers the helper with the system, so that launchd starts it for those who connect.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/CommandLine.h"
#include "client/Explanations.h"
#include "platform/ServiceRegistration.h"

namespace halvo {

// What the system does about registrations; see platform/ServiceRegistration.h.
struct RegistrationService {
  std::function<std::optional<std::string>(std::string_view)> add = halvoRegisterDaemon;
  std::function<std::optional<std::string>(std::string_view)> remove = halvoUnregisterDaemon;
  std::function<DaemonStatus(std::string_view)> look = halvoDaemonStatus;
  std::function<void()> openSettings = halvoOpenLoginItemsSettings;
};

// What standard output gets, and what a person is told.
struct RegistrationReport {
  std::string word;  // "enabled", "requires-approval", "not-registered", "not-found" or "unknown"
  Explanation explanation;
};

// What is wanted already is no failure: scripts may say it again. Blocks; asks neither the helper nor a person.
[[nodiscard]] RegistrationReport carryOutRegistration(const RegistrationCommand& command,
                                                      const RegistrationService& service);

}  // namespace halvo
