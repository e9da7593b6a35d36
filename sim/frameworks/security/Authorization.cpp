#include <Security/Authorization.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "sim/frameworks/corefoundation/Object.h"
#include "sim/frameworks/security/AuthorizationHandle.h"
#include "sim/frameworks/security/RightEvaluation.h"
#include "sim/frameworks/testing/Instrumentation.h"

using namespace halvo::sim;

namespace {

// A set of rights as it is handed to the caller: one allocation that owns its names.
struct OwnedSet {
  AuthorizationItemSet set{};  // first, so that its address is the allocation's
  std::vector<std::string> names;
  std::vector<AuthorizationItem> items;
};

AuthorizationItemSet* makeSet(std::vector<std::string> names) {
  auto owned = std::make_unique<OwnedSet>();
  owned->names = std::move(names);
  for (const std::string& name : owned->names) owned->items.push_back({name.c_str(), 0, nullptr, 0});
  owned->set = {static_cast<UInt32>(owned->items.size()), owned->items.data()};
  countCreated();
  return &owned.release()->set;
}

std::vector<std::string> namesOf(const AuthorizationRights* rights) {
  std::vector<std::string> names;
  if (rights == nullptr) return names;
  for (UInt32 i = 0; i < rights->count; ++i) names.emplace_back(rights->items[i].name);
  return names;
}

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

struct Outcome {
  OSStatus status = errAuthorizationSuccess;
  std::vector<std::string> granted;
};

// One right that is not granted fails the call, unless the caller takes what it gets.
Outcome evaluateAll(const AuthorizationRights& rights, AuthorizationFlags flags, Token& token) {
  const EvaluationRules rules{.mayInteract = (flags & kAuthorizationFlagInteractionAllowed) != 0,
                              .mayExtend = (flags & kAuthorizationFlagExtendRights) != 0};
  Outcome outcome;
  for (const std::string& name : namesOf(&rights)) {
    const OSStatus status = evaluateRight(name, rules, token);
    if (status == errAuthorizationSuccess) {
      outcome.granted.push_back(name);
    } else if ((flags & kAuthorizationFlagPartialRights) == 0) {
      outcome.status = status;
      return outcome;
    }
  }
  return outcome;
}

OSStatus copyRights(const TokenName& name, const AuthorizationRights* rights, AuthorizationFlags flags,
                    AuthorizationRights** authorizedRights) {
  if (!isWellFormed(rights)) return errAuthorizationInvalidSet;
  auto token = readToken(name);
  if (!token) return errAuthorizationInvalidRef;
  const auto before = token->credentials.size();
  Outcome outcome = evaluateAll(*rights, flags, *token);
  // A password that was given counts even when another right of the set was refused. A check that changed nothing
  // leaves the file alone.
  if (token->credentials.size() != before && !writeToken(name, *token)) return errAuthorizationInternal;
  if (outcome.status == errAuthorizationSuccess && authorizedRights != nullptr) {
    *authorizedRights = makeSet(std::move(outcome.granted));
  }
  return outcome.status;
}

OSStatus create(const AuthorizationRights* rights, AuthorizationFlags flags, AuthorizationRef* authorization) {
  if (const auto fault = scriptedFault("create")) return *fault;
  if (authorization == nullptr && rights == nullptr) return errAuthorizationInvalidPointer;
  const auto name = createToken();
  if (!name) return errAuthorizationInternal;
  auto handle = std::make_unique<AuthorizationOpaqueRef>(*name, true);
  const OSStatus status = rights == nullptr ? errAuthorizationSuccess : copyRights(*name, rights, flags, nullptr);
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
  return copyRights(authorization->name, rights, flags, authorizedRights);
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

OSStatus AuthorizationFreeItemSet(AuthorizationItemSet* set) {
  if (set == nullptr) return errAuthorizationInvalidSet;
  delete reinterpret_cast<OwnedSet*>(set);
  countDestroyed();
  return errAuthorizationSuccess;
}

}  // extern "C"
