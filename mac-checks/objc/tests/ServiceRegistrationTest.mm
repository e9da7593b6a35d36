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

TEST_F(ServiceRegistrationTest, AFailureIsItsErrorsWholeDescription) {
  SMAppService.scriptedError = [HalvoVerboseError errorWithDomain:@"SMAppServiceErrorDomain"
                                                             code:6
                                                         userInfo:@{NSLocalizedDescriptionKey : @"Job not found"}];

  EXPECT_EQ(halvoUnregisterDaemon("com.halvo.helper.plist"),
            "Error Domain=SMAppServiceErrorDomain Code=6 \"Job not found\"");
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
