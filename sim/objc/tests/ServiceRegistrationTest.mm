#include "platform/ServiceRegistration.h"

#import <ServiceManagement/ServiceManagement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvo::sim {
namespace {

class ServiceRegistrationTest : public testing::Test {
 protected:
  ~ServiceRegistrationTest() override { [SMAppService reset]; }
};

TEST_F(ServiceRegistrationTest, SuccessHasNoDescription) {
  EXPECT_EQ(halvoUnregisterDaemon("com.halvo.helper.plist"), std::nullopt);
}

TEST_F(ServiceRegistrationTest, TheServiceIsNamedByItsPropertyList) {
  static_cast<void>(halvoUnregisterDaemon("com.halvo.helper.plist"));

  EXPECT_TRUE([SMAppService.unregisteredPlistNames isEqualToArray:@[ @"com.halvo.helper.plist" ]]);
}

TEST_F(ServiceRegistrationTest, AFailureIsItsErrorsDescription) {
  SMAppService.scriptedError = [NSError errorWithDomain:@"SMAppServiceErrorDomain"
                                                   code:6
                                               userInfo:@{NSLocalizedDescriptionKey : @"Job not found"}];

  const auto failure = halvoUnregisterDaemon("com.halvo.helper.plist");

  EXPECT_EQ(failure, SMAppService.scriptedError.description.UTF8String);
  EXPECT_NE(failure->find("Job not found"), std::string::npos);
}

TEST_F(ServiceRegistrationTest, ADaemonThatIsNotRegisteredIsAFailureWithItsDomainAndCode) {
  const auto failure = halvoUnregisterDaemon("com.halvo.unknown.plist");

  ASSERT_NE(failure, std::nullopt);
  EXPECT_NE(failure->find("SMAppServiceErrorDomain"), std::string::npos);
  EXPECT_NE(failure->find('6'), std::string::npos);
}

TEST_F(ServiceRegistrationTest, AFailureWithoutErrorObjectIsStillAFailure) {
  SMAppService.failsWithoutError = YES;

  EXPECT_EQ(halvoUnregisterDaemon("com.halvo.helper.plist"), "unknown error");
}

}  // namespace
}  // namespace halvo::sim
