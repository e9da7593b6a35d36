#include <Security/Authorization.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/frameworks/security/RightEvaluation.h"
#include "sim/frameworks/security/StateFiles.h"
#include "sim/frameworks/security/TokenStore.h"
#include "sim/frameworks/testing/Instrumentation.h"

using namespace halvo::sim;

namespace {

// How many handles this process holds on each authorization that it created.
struct OwnHandles {
  std::mutex mutex;
  std::map<TokenName, int> counts;  // guarded by the mutex
};

// Never destroyed: threads may outlive main().
OwnHandles& ownHandles() {
  static OwnHandles& handles = *new OwnHandles;
  return handles;
}

// Answers how many there are afterwards.
int countHandles(const TokenName& name, int change) {
  const std::lock_guard lock(ownHandles().mutex);
  const int left = ownHandles().counts[name] += change;
  if (left == 0) ownHandles().counts.erase(name);
  return left;
}

}  // namespace

// This process's handle on a live authorization, which ends with the last handle of the process that created it; other
// processes drop only their own.
struct AuthorizationOpaqueRef {
  AuthorizationOpaqueRef(const TokenName& tokenName, bool isOwner) : name(tokenName), isOwner_(isOwner) {
    countCreated();
    if (isOwner_) countHandles(name, 1);
  }
  AuthorizationOpaqueRef(const AuthorizationOpaqueRef&) = delete;
  AuthorizationOpaqueRef& operator=(const AuthorizationOpaqueRef&) = delete;
  ~AuthorizationOpaqueRef() {
    if (isOwner_ && countHandles(name, -1) == 0) destroyToken(name);
    countDestroyed();
  }

  const TokenName name;

 private:
  const bool isOwner_;
};

namespace {

std::string describe(const AuthorizationItem& item) {
  if (item.valueLength == 0 && item.value == nullptr && item.flags == 0) return item.name;
  return std::string(item.name) + "(length=" + std::to_string(item.valueLength) +
         " value=" + (item.value == nullptr ? "null" : "given") + " flags=" + std::to_string(item.flags) + ")";
}

std::string describe(AuthorizationFlags flags, const AuthorizationRights* rights,
                     const AuthorizationEnvironment* environment) {
  std::string items;
  for (UInt32 i = 0; rights != nullptr && i < rights->count; ++i) {
    items += (i == 0 ? "" : ",") + describe(rights->items[i]);
  }
  return "flags=" + std::to_string(flags) + " rights=" + items + (environment == nullptr ? "" : " environment=given");
}

// A length without a value is worse than refused on a Mac: the value is copied from where nothing is.
bool isWellFormed(const AuthorizationRights* rights) {
  if (rights == nullptr || (rights->count > 0 && rights->items == nullptr)) return false;
  return std::all_of(rights->items, rights->items + rights->count, [](const auto& item) {
    return item.name != nullptr && (item.value != nullptr || item.valueLength == 0);
  });
}

// The first right that is not granted fails the call.
OSStatus evaluateAll(const AuthorizationRights& rights, AuthorizationFlags flags, Token& token) {
  const EvaluationRules rules{.mayInteract = (flags & kAuthorizationFlagInteractionAllowed) != 0,
                              .mayExtend = (flags & kAuthorizationFlagExtendRights) != 0};
  for (UInt32 i = 0; i < rights.count; ++i) {
    const OSStatus status = evaluateRight(rights.items[i].name, rules, token);
    if (status != errAuthorizationSuccess) return status;
  }
  return errAuthorizationSuccess;
}

OSStatus copyRights(const TokenName& name, const AuthorizationRights* rights, AuthorizationFlags flags) {
  if (!isWellFormed(rights)) return errAuthorizationInvalidSet;
  auto token = readToken(name);
  if (!token) return errAuthorizationInvalidRef;
  const auto before = token->credentials.size();
  const OSStatus status = evaluateAll(*rights, flags, *token);
  // A password that was given counts even when another right of the set was refused. A check that changed nothing
  // leaves the file alone.
  if (token->credentials.size() != before && !writeToken(name, *token)) return errAuthorizationInternal;
  return status;
}

OSStatus create(const AuthorizationRights* rights, AuthorizationFlags flags, AuthorizationRef* authorization) {
  if (const auto fault = scriptedFault("create")) return *fault;
  if (authorization == nullptr && rights == nullptr) return errAuthorizationInvalidPointer;
  const auto name = createToken();
  if (!name) return errAuthorizationInternal;
  auto handle = std::make_unique<AuthorizationOpaqueRef>(*name, true);
  const OSStatus status = rights == nullptr ? errAuthorizationSuccess : copyRights(*name, rights, flags);
  if (status == errAuthorizationSuccess && authorization != nullptr) *authorization = handle.release();
  return status;
}

OSStatus createFromExternalForm(const AuthorizationExternalForm* extForm, AuthorizationRef* authorization) {
  if (const auto fault = scriptedFault("create-from-external-form")) return *fault;
  if (extForm == nullptr || authorization == nullptr) return errAuthorizationInvalidPointer;
  TokenName name{};
  std::memcpy(name.data(), extForm->bytes, name.size());
  const auto token = readToken(name);
  if (!token) return errAuthorizationDenied;
  *authorization = new AuthorizationOpaqueRef(name, token->creator == ::getpid());
  return errAuthorizationSuccess;
}

}  // namespace

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights, const AuthorizationEnvironment* environment,
                             AuthorizationFlags flags, AuthorizationRef* authorization) {
  const auto scripted = observe("AuthorizationCreate", [&] { return describe(flags, rights, environment); });
  return perform(scripted, authorization, [&] { return create(rights, flags, authorization); });
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags) {
  if (const auto scripted = observe("AuthorizationFree", [&] { return "flags=" + std::to_string(flags); })) {
    return scripted->status;
  }
  if (authorization == nullptr) return errAuthorizationInvalidRef;
  if ((flags & kAuthorizationFlagDestroyRights) != 0) destroyToken(authorization->name);
  delete authorization;
  return errAuthorizationSuccess;
}

OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                                 AuthorizationRights** authorizedRights) {
  const auto scripted = observe("AuthorizationCopyRights", [&] {
    return describe(flags, rights, environment) + (authorizedRights == nullptr ? "" : " authorized=asked");
  });
  if (scripted) return scripted->store(authorizedRights);
  if (const auto fault = scriptedFault("copy-rights")) return *fault;
  if (authorization == nullptr) return errAuthorizationInvalidRef;
  if (authorizedRights != nullptr) abortWithReason("nothing here frees the set of granted rights: do not ask for it");
  return copyRights(authorization->name, rights, flags);
}

OSStatus AuthorizationMakeExternalForm(AuthorizationRef authorization, AuthorizationExternalForm* extForm) {
  if (const auto scripted = observe("AuthorizationMakeExternalForm", [] { return std::string(); })) {
    return scripted->store(extForm);
  }
  if (const auto fault = scriptedFault("make-external-form")) return *fault;
  if (authorization == nullptr) return errAuthorizationInvalidRef;
  if (extForm == nullptr) return errAuthorizationInvalidPointer;
  std::memcpy(extForm->bytes, authorization->name.data(), sizeof extForm->bytes);
  return errAuthorizationSuccess;
}

OSStatus AuthorizationCreateFromExternalForm(const AuthorizationExternalForm* extForm,
                                             AuthorizationRef* authorization) {
  const auto scripted = observe("AuthorizationCreateFromExternalForm", [&] {
    return "form=" + (extForm == nullptr ? "null" : hexText(extForm->bytes, sizeof extForm->bytes));
  });
  return perform(scripted, authorization, [&] { return createFromExternalForm(extForm, authorization); });
}

}  // extern "C"
