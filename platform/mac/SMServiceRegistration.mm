#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "platform/ServiceRegistration.h"
#import "platform/mac/FoundationText.h"

namespace halvo {

std::optional<std::string> halvoUnregisterDaemon(std::string_view plistName) {
  @autoreleasepool {
    SMAppService* const service = [SMAppService daemonServiceWithPlistName:foundationText(plistName)];
    NSError* error = nil;
    if ([service unregisterAndReturnError:&error]) return std::nullopt;
    // The whole description: it carries the domain and the code, which support needs and the localised text lacks.
    const std::string description = textFromFoundation(error.description);
    return description.empty() ? "unknown error" : description;
  }
}

}  // namespace halvo
