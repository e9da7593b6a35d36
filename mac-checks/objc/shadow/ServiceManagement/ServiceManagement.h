// Stands in for the service manager of an application whose bundle holds one property list, com.halvo.helper.plist.
// Refuses what the system refuses, records what it was asked, and fails as scripted.
#pragma once

#include <string>
#include <vector>

#define HALVO_INTRODUCED(version)
#import "mac-checks/mach-o/include/ServiceManagement/ServiceManagement.h"

namespace halvo::sim {

// What tests script and look at; assigning {} begins anew.
struct ServiceManagerScript {
  // Of the daemon in the bundle: approving, or an answer that no documentation names, changes it from outside.
  SMAppServiceStatus status = SMAppServiceStatusNotRegistered;
  bool asksAnAdministrator = false;  // registering waits for one
  NSError* error = nil;              // of the next calls, if any
  bool failsWithoutError = false;    // as if there were one, but without the object
  std::vector<std::string> calls;    // "register com.halvo.helper.plist" and the like
};
inline ServiceManagerScript serviceManager;

}  // namespace halvo::sim
