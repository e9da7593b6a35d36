// What the tests of Authorization Services share: one call in one line, on a machine with one defined right.
#pragma once

#include <Security/Security.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <type_traits>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/support/MachinePaths.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {

inline constexpr AuthorizationFlags kExtend = kAuthorizationFlagExtendRights;
inline constexpr AuthorizationFlags kAsk = kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed;
inline constexpr const char* kRight = "com.halvo.test";

struct Freer {
  void operator()(AuthorizationRef reference) const { AuthorizationFree(reference, kAuthorizationFlagDefaults); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<AuthorizationRef>, Freer>;

inline Handle create() {
  AuthorizationRef reference = nullptr;
  EXPECT_EQ(AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, 0, &reference), errAuthorizationSuccess);
  return Handle(reference);
}

inline AuthorizationExternalForm formOf(const Handle& handle) {
  AuthorizationExternalForm form{};
  EXPECT_EQ(AuthorizationMakeExternalForm(handle.get(), &form), errAuthorizationSuccess);
  return form;
}

struct Opened {
  OSStatus status;
  Handle handle;
};

inline Opened open(const AuthorizationExternalForm& form) {
  AuthorizationRef reference = nullptr;
  const OSStatus status = AuthorizationCreateFromExternalForm(&form, &reference);
  return {status, Handle(reference)};
}

inline OSStatus copyRight(const Handle& handle, AuthorizationFlags flags, const char* right = kRight) {
  AuthorizationItem item = {right, 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  return AuthorizationCopyRights(handle.get(), &rights, kAuthorizationEmptyEnvironment, flags, nullptr);
}

class AuthorizationTest : public testing::Test {
 protected:
  AuthorizationTest() {
    setStateRoot(state_.path());
    state_.write("authorization-answer", "allow\n");
    define({{"class", "user"}, {"group", "admin"}, {"timeout", 300}, {"shared", false}});
  }

  void define(const nlohmann::json& definition, const std::string& right = kRight) const {
    state_.write("authorization-db/" + right + ".json", definition.dump());
  }

  std::filesystem::path onlyToken() const {
    return std::filesystem::directory_iterator(state_.path() / "authorization-tokens")->path();
  }

  // Moves every credential back in time.
  void age(double seconds) const {
    nlohmann::json token = nlohmann::json::parse(state_.read(onlyToken()));
    token["credentials"][0]["obtained"] = uptimeSeconds() - seconds;
    state_.write(onlyToken(), token.dump());
  }

  TemporaryDirectory state_;
};

}  // namespace halvo::sim
