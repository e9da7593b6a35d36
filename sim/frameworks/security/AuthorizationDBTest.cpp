#include <Security/Security.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/security/JSONObjects.h"
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

using nlohmann::json;

constexpr const char* kRight = "com.halvo.test";

class AuthorizationDBTest : public testing::Test {
 protected:
  AuthorizationDBTest() {
    setStateRoot(state_.path());
    AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, 0, &reference_);
  }
  ~AuthorizationDBTest() override { AuthorizationFree(reference_, kAuthorizationFlagDefaults); }

  OSStatus set(const json& definition, const char* right = kRight, const json& prompt = nullptr) const {
    const OwnedObject text = objectFrom(prompt);
    return AuthorizationRightSet(reference_, right, objectFrom(definition).get(), static_cast<CFStringRef>(text.get()),
                                 nullptr, nullptr);
  }

  // What the database gives back, as JSON; null when the call fails.
  static json get(const char* right = kRight) {
    CFDictionaryRef dictionary = nullptr;
    const OSStatus status = AuthorizationRightGet(right, &dictionary);
    const OwnedObject owner(dictionary);
    return status == errAuthorizationSuccess ? jsonFrom(owner.get()) : json();
  }

  TemporaryDirectory state_;
  AuthorizationRef reference_ = nullptr;
};

TEST_F(AuthorizationDBTest, WhatIsReadBackIsRebuiltWithEveryKeyOfTheClass) {
  ASSERT_EQ(set({{"class", "user"}, {"group", "admin"}, {"timeout", 300}}, kRight, "Why."), errAuthorizationSuccess);

  json definition = get();

  EXPECT_TRUE(definition["created"].is_number_float());
  EXPECT_TRUE(definition["modified"].is_number_float());
  definition.erase("created");
  definition.erase("modified");
  EXPECT_EQ(definition, json::parse(R"({"class": "user", "group": "admin", "timeout": 300, "tries": 10000,
      "shared": false, "allow-root": false, "session-owner": false, "authenticate-user": true, "version": 0,
      "default-prompt": {"": "Why."}})"));
}

TEST_F(AuthorizationDBTest, ANumberIsNoBooleanAndABooleanNoNumber) {
  ASSERT_EQ(set({{"class", "user"}, {"shared", 1}, {"authenticate-user", 0}, {"timeout", true}}),
            errAuthorizationSuccess);

  const json definition = get();

  EXPECT_EQ(definition["shared"], false);
  EXPECT_EQ(definition["authenticate-user"], true);
  EXPECT_EQ(definition["timeout"], 2147483647);
}

TEST_F(AuthorizationDBTest, UnknownKeysAndForgedOriginsAreDropped) {
  ASSERT_EQ(set({{"class", "user"}, {"colour", "green"}, {"identifier", "com.apple.forged"}, {"created", 1.0}}),
            errAuthorizationSuccess);

  const json definition = get();

  EXPECT_FALSE(definition.contains("colour"));
  EXPECT_FALSE(definition.contains("identifier"));
  EXPECT_GT(definition["created"], 1e8);
}

TEST_F(AuthorizationDBTest, ANameAloneDelegates) {
  ASSERT_EQ(set("com.example.other"), errAuthorizationSuccess);

  EXPECT_EQ(get()["class"], "rule");
  EXPECT_EQ(get()["rule"], "com.example.other");
}

TEST_F(AuthorizationDBTest, WritingAgainKeepsWhenItWasCreated) {
  ASSERT_EQ(set({{"class", "user"}}), errAuthorizationSuccess);
  const json created = get()["created"];

  ASSERT_EQ(set({{"class", "user"}, {"shared", true}}), errAuthorizationSuccess);

  EXPECT_EQ(get()["created"], created);
  EXPECT_EQ(get()["shared"], true);
}

TEST_F(AuthorizationDBTest, WritingAgainErasesMechanismsThatSomebodyAdded) {
  state_.write("authorization-db/com.halvo.test.json", R"({"class":"user","mechanisms":["Plugin:allow"]})");

  ASSERT_EQ(set({{"class", "user"}}), errAuthorizationSuccess);

  EXPECT_EQ(state_.read("authorization-db/com.halvo.test.json").find("mechanisms"), std::string::npos);
}

TEST_F(AuthorizationDBTest, ARightNobodyDefinedIsDeniedAndTheResultStaysUntouched) {
  const auto* const marker = reinterpret_cast<CFDictionaryRef>(0x1);
  CFDictionaryRef dictionary = marker;

  EXPECT_EQ(AuthorizationRightGet("com.example.none", &dictionary), errAuthorizationDenied);
  EXPECT_EQ(AuthorizationRightGet("../authorization-db/x", &dictionary), errAuthorizationDenied);
  EXPECT_EQ(dictionary, marker);
}

TEST_F(AuthorizationDBTest, ReservedNamesAreRefused) {
  EXPECT_EQ(set({{"class", "allow"}}, "com.halvo."), errAuthorizationDenied);
  EXPECT_EQ(set({{"class", "allow"}}, "config.modify.com.halvo.test"), errAuthorizationDenied);
  EXPECT_EQ(set({{"class", "allow"}}, ""), errAuthorizationDenied);
}

TEST_F(AuthorizationDBTest, ADefinitionIsADictionaryOrAName) {
  EXPECT_EQ(AuthorizationRightSet(reference_, kRight, kCFBooleanTrue, nullptr, nullptr, nullptr),
            errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationRightSet(reference_, kRight, nullptr, nullptr, nullptr, nullptr),
            errAuthorizationInvalidPointer);
  EXPECT_EQ(AuthorizationRightSet(nullptr, kRight, kCFBooleanTrue, nullptr, nullptr, nullptr),
            errAuthorizationInvalidRef);
}

TEST_F(AuthorizationDBTest, OnlyRootChangesARightAndOnlyASignedProgramAddsOne) {
  if (::geteuid() != 0) GTEST_SKIP() << "acting as another user needs root";
  ASSERT_EQ(set({{"class", "user"}}), errAuthorizationSuccess);
  ASSERT_EQ(::chmod(state_.path().c_str(), 0777), 0);
  const auto writeAsUser = [&] {
    static_cast<void>(::setresuid(501, 501, 501) == 0);
    const bool refused = set({{"class", "allow"}}) == errAuthorizationDenied &&
                         set({{"class", "allow"}}, "com.example.new") == errAuthorizationDenied;
    std::_Exit(refused && ::geteuid() == 501 ? 0 : 1);
  };

  EXPECT_EXIT(writeAsUser(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(get()["class"], "user");
}

}  // namespace
}  // namespace halvo::sim
