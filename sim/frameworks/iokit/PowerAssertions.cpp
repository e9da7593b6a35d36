#include <IOKit/pwr_mgt/IOPMLib.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <mutex>
#include <string>

#include "sim/frameworks/corefoundation/Types.h"
#include "sim/frameworks/testing/Instrumentation.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

// The assertions of this process. Whoever looks at the machine finds them in a state file, a line each.
class PowerAssertions {
 public:
  IOPMAssertionID add(const std::string& description) {
    const std::scoped_lock guard(lock_);
    held_[++last_] = description;
    publish();
    return last_;
  }

  bool remove(IOPMAssertionID assertion) {
    const std::scoped_lock guard(lock_);
    if (held_.erase(assertion) == 0) return false;
    publish();
    return true;
  }

 private:
  void publish() const {
    std::ofstream file(stateRoot() / "power-assertions", std::ios::trunc);
    for (const auto& [assertion, description] : held_) file << ::getpid() << ' ' << description << '\n';
  }

  std::mutex lock_;
  std::map<IOPMAssertionID, std::string> held_;  // guarded by lock_
  IOPMAssertionID last_ = kIOPMNullAssertionID;  // guarded by lock_
};

// Never destroyed: threads may outlive main().
PowerAssertions& assertions() {
  static auto& assertions = *new PowerAssertions;
  return assertions;
}

std::string describe(CFStringRef type, IOPMAssertionLevel level, CFStringRef name) {
  return "type=" + textOf(type).value_or("null") + " level=" + std::to_string(level) +
         " name=" + quotedText(textOf(name).value_or(""));
}

}  // namespace
}  // namespace halvo::sim

using namespace halvo::sim;

extern "C" {

IOReturn IOPMAssertionCreateWithName(CFStringRef AssertionType, IOPMAssertionLevel AssertionLevel,
                                     CFStringRef AssertionName, IOPMAssertionID* AssertionID) {
  const auto scripted =
      observe("IOPMAssertionCreateWithName", [&] { return describe(AssertionType, AssertionLevel, AssertionName); });
  if (scripted) return scripted->store(AssertionID);
  const auto type = textOf(AssertionType);
  const auto name = textOf(AssertionName);
  if (!type || !name || AssertionID == nullptr) return kIOReturnBadArgument;
  *AssertionID = assertions().add(*type + " " + *name);
  return kIOReturnSuccess;
}

IOReturn IOPMAssertionRelease(IOPMAssertionID AssertionID) {
  const auto scripted = observe("IOPMAssertionRelease", [] { return std::string(); });
  if (scripted) return scripted->status;
  if (AssertionID == kIOPMNullAssertionID) return kIOReturnBadArgument;
  return assertions().remove(AssertionID) ? kIOReturnSuccess : kIOReturnNotFound;
}

}  // extern "C"
