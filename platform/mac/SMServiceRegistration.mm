#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "platform/ServiceRegistration.h"
#import "platform/mac/FoundationText.h"

namespace halvo {
namespace {

SMAppService* daemonNamed(std::string_view plistName) {
  return [SMAppService daemonServiceWithPlistName:foundationText(plistName)];
}

// The whole description: it carries the domain and the code, which support needs and the localised text lacks.
std::string descriptionOf(NSError* error) {
  const std::string description = textFromFoundation(error.description);
  return description.empty() ? "unknown error" : description;
}

}  // namespace

std::optional<std::string> halvoRegisterDaemon(std::string_view plistName) {
  @autoreleasepool {
    NSError* error = nil;
    if ([daemonNamed(plistName) registerAndReturnError:&error]) return std::nullopt;
    return descriptionOf(error);
  }
}

std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName) {
  @autoreleasepool {
    NSError* error = nil;
    if ([daemonNamed(plistName) unregisterAndReturnError:&error]) return std::nullopt;
    return descriptionOf(error);
  }
}

DaemonStatus halvoDaemonStatus(std::string_view plistName) {
  @autoreleasepool {
    switch (daemonNamed(plistName).status) {
      case SMAppServiceStatusNotRegistered:
        return DaemonStatus::notRegistered;
      case SMAppServiceStatusEnabled:
        return DaemonStatus::enabled;
      case SMAppServiceStatusRequiresApproval:
        return DaemonStatus::requiresApproval;
      case SMAppServiceStatusNotFound:
        return DaemonStatus::notFound;
    }
    return DaemonStatus::unknown;
  }
}

void halvoOpenLoginItemsSettings() {
  @autoreleasepool {
    [SMAppService openSystemSettingsLoginItems];
  }
}

}  // namespace halvo
