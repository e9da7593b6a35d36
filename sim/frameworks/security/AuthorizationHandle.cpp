#include "sim/frameworks/security/AuthorizationHandle.h"

#include <fstream>
#include <map>
#include <mutex>
#include <string>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

// How many handles this process holds on each authorization it created.
class OwnedTokens {
 public:
  static OwnedTokens& instance() {
    static OwnedTokens& tokens = *new OwnedTokens;
    return tokens;
  }

  void add(const TokenName& name) {
    const std::lock_guard lock(mutex_);
    ++handles_[name];
  }

  // True with the last handle.
  bool drop(const TokenName& name) {
    const std::lock_guard lock(mutex_);
    if (--handles_[name] > 0) return false;
    handles_.erase(name);
    return true;
  }

 private:
  std::mutex mutex_;
  std::map<TokenName, int> handles_;  // guarded by the mutex
};

}  // namespace

std::optional<OSStatus> scriptedFault(std::string_view call) {
  std::ifstream file(stateRoot() / "faults" / "authorization");
  std::string name;
  OSStatus status = 0;
  while (file >> name >> status) {
    if (name == call) return status;
  }
  return std::nullopt;
}

}  // namespace halvo::sim

using halvo::sim::OwnedTokens;

AuthorizationOpaqueRef::AuthorizationOpaqueRef(const halvo::sim::TokenName& tokenName, bool isOwner)
    : name(tokenName), isOwner_(isOwner) {
  halvo::sim::countCreated();
  if (isOwner_) OwnedTokens::instance().add(name);
}

AuthorizationOpaqueRef::~AuthorizationOpaqueRef() {
  if (isOwner_ && OwnedTokens::instance().drop(name)) halvo::sim::destroyToken(name);
  halvo::sim::countDestroyed();
}
