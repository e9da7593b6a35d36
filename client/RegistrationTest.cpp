#include "client/Registration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace halvo {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

// A system that keeps one registration.
class ScriptedSystem {
 public:
  RegistrationService service() {
    return {.add =
                [this](std::string_view name) {
                  calls.push_back("register " + std::string(name));
                  status = afterAdding;
                  return failure;
                },
            .remove =
                [this](std::string_view name) {
                  calls.push_back("unregister " + std::string(name));
                  status = afterRemoving;
                  return failure;
                },
            .look =
                [this](std::string_view name) {
                  calls.push_back("look " + std::string(name));
                  return status;
                },
            .openSettings = [this] { calls.emplace_back("settings"); }};
  }

  DaemonStatus status = DaemonStatus::notRegistered;
  DaemonStatus afterAdding = DaemonStatus::enabled;
  DaemonStatus afterRemoving = DaemonStatus::notRegistered;
  std::optional<std::string> failure;
  std::vector<std::string> calls;
};

class RegistrationTest : public testing::Test {
 protected:
  RegistrationReport carryOut(Registering what) { return carryOutRegistration({.what = what}, system.service()); }

  ScriptedSystem system;
};

struct StatusRow {
  const char* name;
  DaemonStatus status;
  const char* word;
  ExitStatus exitStatus;
  const char* text;
};

class RegistrationStatus : public RegistrationTest, public testing::WithParamInterface<StatusRow> {};

TEST_P(RegistrationStatus, IsToldWithWhatToDoNext) {
  system.status = GetParam().status;

  const RegistrationReport report = carryOut(Registering::look);

  EXPECT_EQ(report.word, GetParam().word);
  EXPECT_EQ(report.explanation, (Explanation{GetParam().exitStatus, GetParam().text}));
  EXPECT_THAT(system.calls, ElementsAre("look com.halvo.helper.plist"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RegistrationStatus,
    testing::Values(
        StatusRow{"Enabled", DaemonStatus::enabled, "enabled", ExitStatus::success,
                  "The helper is registered, and the system starts it for the next request, such as \"halvo-app "
                  "ping\"."},
        StatusRow{"RequiresApproval", DaemonStatus::requiresApproval, "requires-approval", ExitStatus::unauthorized,
                  "The helper is registered and needs approval in System Settings. An administrator allows Halvo under "
                  "General, Login Items; \"halvo-app status --open-settings\" shows the page."},
        StatusRow{"NotRegistered", DaemonStatus::notRegistered, "not-registered", ExitStatus::unreachable,
                  "The helper is not registered. \"halvo-app register\" registers it."},
        StatusRow{"NotFound", DaemonStatus::notFound, "not-found", ExitStatus::unreachable,
                  "The system finds no helper in the application that this program lies in. Use the halvo-app inside "
                  "Halvo.app; if it is that one, \"halvo-app register\" tells what is missing."},
        StatusRow{"Unknown", DaemonStatus::unknown, "unknown", ExitStatus::unreachable,
                  "The system says something about the registration that this program does not know. Look at System "
                  "Settings, General, Login Items."}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(RegistrationTest, TheSettingsAreShownOnRequestOnly) {
  static_cast<void>(carryOut(Registering::look));
  EXPECT_THAT(system.calls, ElementsAre("look com.halvo.helper.plist"));

  static_cast<void>(carryOutRegistration({.what = Registering::look, .openSettings = true}, system.service()));
  EXPECT_THAT(system.calls, ElementsAre("look com.halvo.helper.plist", "settings", "look com.halvo.helper.plist"));
}

TEST_F(RegistrationTest, RegistersUnderTheNameOfThePropertyList) {
  const RegistrationReport report = carryOut(Registering::add);

  EXPECT_THAT(system.calls, ElementsAre("register com.halvo.helper.plist", "look com.halvo.helper.plist"));
  EXPECT_EQ(report.word, "enabled");
  EXPECT_EQ(report.explanation.status, ExitStatus::success);
}

TEST_F(RegistrationTest, WhatHasComeOfAnAcceptedRegistrationTheStatusTells) {
  system.afterAdding = DaemonStatus::notRegistered;

  const RegistrationReport report = carryOut(Registering::add);

  EXPECT_EQ(report.word, "not-registered");
  EXPECT_EQ(report.explanation, (Explanation{ExitStatus::unreachable,
                                             "The helper is not registered. \"halvo-app register\" registers it."}));
}

TEST_F(RegistrationTest, RegisteredAlreadyIsAsGoodAsRegistered) {
  system.failure = "Error Domain=SMAppServiceErrorDomain Code=12";

  const RegistrationReport report = carryOut(Registering::add);

  EXPECT_EQ(report.explanation.status, ExitStatus::success);
}

TEST_F(RegistrationTest, OneThatWaitsForApprovalIsNoFailureOfRegistering) {
  system.failure = "Error Domain=SMAppServiceErrorDomain Code=1";
  system.afterAdding = DaemonStatus::requiresApproval;

  const RegistrationReport report = carryOut(Registering::add);

  EXPECT_EQ(report.word, "requires-approval");
  EXPECT_EQ(report.explanation.status, ExitStatus::unauthorized);
  EXPECT_THAT(report.explanation.text, StartsWith("The helper is registered and needs approval in System Settings."));
}

TEST_F(RegistrationTest, WhatTheSystemSaysOfAFailureIsShownSoThatItMovesNoCursor) {
  system.failure = "Code=8\x1B[2J";
  system.afterAdding = DaemonStatus::notFound;

  const RegistrationReport report = carryOut(Registering::add);

  EXPECT_EQ(report.word, "not-found");
  EXPECT_EQ(report.explanation,
            (Explanation{ExitStatus::refused,
                         "The system did not register the helper (Code=8\\033[2J). Use the halvo-app inside Halvo.app, "
                         "in /Applications; if it is that one, install the application again."}));
}

TEST_F(RegistrationTest, TakesTheRegistrationBack) {
  system.status = DaemonStatus::enabled;

  const RegistrationReport report = carryOut(Registering::remove);

  EXPECT_THAT(system.calls, ElementsAre("look com.halvo.helper.plist", "unregister com.halvo.helper.plist",
                                        "look com.halvo.helper.plist"));
  EXPECT_EQ(report.word, "not-registered");
  EXPECT_EQ(report.explanation,
            (Explanation{ExitStatus::success,
                         "The helper is not registered any more. What the product installed stays; \"halvo-app "
                         "uninstall\" removes it, and needs the helper for that: \"halvo-app register\" brings it "
                         "back."}));
}

TEST_F(RegistrationTest, OneThatStillWaitsForApprovalIsTakenBackAsWell) {
  system.status = DaemonStatus::requiresApproval;
  system.afterRemoving = DaemonStatus::notFound;

  const RegistrationReport report = carryOut(Registering::remove);

  EXPECT_EQ(report.word, "not-found");
  EXPECT_EQ(report.explanation.status, ExitStatus::success);
}

TEST_F(RegistrationTest, WhereNothingIsRegisteredThereIsNothingToTakeBack) {
  const RegistrationReport report = carryOut(Registering::remove);

  EXPECT_THAT(system.calls, ElementsAre("look com.halvo.helper.plist"));
  EXPECT_EQ(report.word, "not-registered");
  EXPECT_EQ(report.explanation,
            (Explanation{ExitStatus::success, "The helper is not registered: there is nothing to take back."}));
}

TEST_F(RegistrationTest, ARegistrationThatStaysIsAFailure) {
  system.status = DaemonStatus::enabled;
  system.afterRemoving = DaemonStatus::enabled;
  system.failure = "Code=2";

  const RegistrationReport report = carryOut(Registering::remove);

  EXPECT_EQ(report.word, "enabled");
  EXPECT_EQ(report.explanation,
            (Explanation{ExitStatus::refused,
                         "The system did not take the registration back (Code=2). Use the halvo-app inside Halvo.app, "
                         "in /Applications; if it is that one, install the application again."}));
}

}  // namespace
}  // namespace halvo
