#include "platform/ServiceRegistration.h"

#import <ServiceManagement/ServiceManagement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Describes itself as a Mac's errors do: with domain and code around the localised text; the package shows that text
// alone.
@interface HalvoVerboseError : NSError
@end

@implementation HalvoVerboseError
- (NSString*)description {
  return [NSString stringWithFormat:@"Error Domain=%@ Code=%d \"%@\"", self.domain, static_cast<int>(self.code),
                                    self.localizedDescription];
}
@end

namespace halvo::sim {
namespace {

using testing::ElementsAre;

constexpr const char* kPlist = "com.halvo.helper.plist";

class ServiceRegistrationTest : public testing::Test {
 protected:
  ~ServiceRegistrationTest() override { serviceManager = {}; }
};

TEST_F(ServiceRegistrationTest, ARegisteredDaemonIsEnabled) {
  EXPECT_EQ(halvoRegisterDaemon(kPlist), std::nullopt);

  EXPECT_EQ(halvoDaemonStatus(kPlist), DaemonStatus::enabled);
}

TEST_F(ServiceRegistrationTest, AnUnregisteredOneIsNotRegistered) {
  static_cast<void>(halvoRegisterDaemon(kPlist));

  EXPECT_EQ(halvoUnregisterDaemon(kPlist), std::nullopt);

  EXPECT_EQ(halvoDaemonStatus(kPlist), DaemonStatus::notRegistered);
}

TEST_F(ServiceRegistrationTest, OneThatHasToBeApprovedFailsAndIsThereAllTheSame) {
  serviceManager.asksAnAdministrator = true;

  EXPECT_NE(halvoRegisterDaemon(kPlist), std::nullopt);

  EXPECT_EQ(halvoDaemonStatus(kPlist), DaemonStatus::requiresApproval);
}

TEST_F(ServiceRegistrationTest, TheServiceIsNamedByItsPropertyList) {
  static_cast<void>(halvoRegisterDaemon(kPlist));
  static_cast<void>(halvoDaemonStatus(kPlist));
  static_cast<void>(halvoUnregisterDaemon(kPlist));

  EXPECT_THAT(serviceManager.calls, ElementsAre("register com.halvo.helper.plist", "status com.halvo.helper.plist",
                                                "unregister com.halvo.helper.plist"));
}

TEST_F(ServiceRegistrationTest, TheSettingsAreOpenedOnce) {
  halvoOpenLoginItemsSettings();

  EXPECT_THAT(serviceManager.calls, ElementsAre("open settings"));
}

TEST_F(ServiceRegistrationTest, AStatusThatNoDocumentationNamesIsUnknown) {
  serviceManager.status = static_cast<SMAppServiceStatus>(4);

  EXPECT_EQ(halvoDaemonStatus(kPlist), DaemonStatus::unknown);
}

TEST_F(ServiceRegistrationTest, WhatTheBundleDoesNotHoldIsNotFound) {
  EXPECT_EQ(halvoDaemonStatus("com.halvo.unknown.plist"), DaemonStatus::notFound);
}

struct FailureRow {
  const char* name;
  std::optional<std::string> (*act)();
  const char* code;
};

class RegistrationFailure : public ServiceRegistrationTest, public testing::WithParamInterface<FailureRow> {};

TEST_P(RegistrationFailure, IsDescribedWithItsDomainAndCode) {
  const auto failure = GetParam().act();

  ASSERT_NE(failure, std::nullopt);
  EXPECT_NE(failure->find("SMAppServiceErrorDomain"), std::string::npos);
  EXPECT_NE(failure->find(GetParam().code), std::string::npos) << *failure;
}

INSTANTIATE_TEST_SUITE_P(
    Table, RegistrationFailure,
    testing::Values(FailureRow{"RegisteredTwice",
                               [] {
                                 static_cast<void>(halvoRegisterDaemon(kPlist));
                                 return halvoRegisterDaemon(kPlist);
                               },
                               "12"},
                    FailureRow{"RegisteredWithoutPropertyList",
                               [] { return halvoRegisterDaemon("com.halvo.unknown.plist"); }, "8"},
                    FailureRow{"UnregisteredUnregistered", [] { return halvoUnregisterDaemon(kPlist); }, "6"},
                    FailureRow{"UnregisteredWithoutPropertyList",
                               [] { return halvoUnregisterDaemon("com.halvo.unknown.plist"); }, "6"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(ServiceRegistrationTest, AFailureIsItsErrorsWholeDescription) {
  serviceManager.error = [HalvoVerboseError errorWithDomain:@"SMAppServiceErrorDomain"
                                                       code:6
                                                   userInfo:@{NSLocalizedDescriptionKey : @"Job not found"}];
  const char* const whole = "Error Domain=SMAppServiceErrorDomain Code=6 \"Job not found\"";

  EXPECT_EQ(halvoRegisterDaemon(kPlist), whole);
  EXPECT_EQ(halvoUnregisterDaemon(kPlist), whole);
}

TEST_F(ServiceRegistrationTest, AFailureWithoutErrorObjectIsStillAFailure) {
  serviceManager.failsWithoutError = true;

  EXPECT_EQ(halvoRegisterDaemon(kPlist), "unknown error");
  EXPECT_EQ(halvoUnregisterDaemon(kPlist), "unknown error");
}

}  // namespace
}  // namespace halvo::sim
