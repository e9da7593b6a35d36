// The listener of the Mac with the helper's own delegate behind it: what a connection looks like after admission and
// after a refusal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#import <objc/runtime.h>

#include "mac-checks/objc/doubles/UnifiedLogDouble.h"
#include "mac-checks/objc/tests/TokenValues.h"
#include "main/HelperService.h"
#import "platform/mac/FoundationText.h"
#import "transport/mac/ExportedHandler.h"
#import "transport/mac/XPCListenerDelegate.h"
#include "transport/mac/testing/RecordingHandler.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Accepts exactly the sample token.
class SampleTokenValidator final : public ClientValidator {
 public:
  bool isAuthorized(const audit_token_t& auditToken) const override { return sameToken(auditToken, kSampleToken); }
};

class AdmissionTest : public testing::Test {
 protected:
  AdmissionTest() {
    listener_.delegate = delegate_;
    [listener_ resume];
  }

  std::vector<std::weak_ptr<RecordingHandler>> handlers_;
  const std::shared_ptr<HelperService> service_ =
      std::make_shared<HelperService>(std::make_shared<SampleTokenValidator>(), [this] {
        auto handler = std::make_shared<RecordingHandler>();
        handlers_.push_back(handler);
        return handler;
      });
  NSXPCListener* const listener_ = [[NSXPCListener alloc] initWithMachServiceName:@"com.halvo.helper"];
  HalvoListenerDelegate* const delegate_ = [[HalvoListenerDelegate alloc] initWithDelegate:service_];
  NSXPCConnection* const genuine_ = [[NSXPCConnection alloc] initWithToken:boxed(kSampleToken) processIdentifier:4711];
  NSXPCConnection* const stranger_ = [[NSXPCConnection alloc] initWithToken:boxed({}) processIdentifier:666];
};

TEST_F(AdmissionTest, AGenuineClientIsAdmittedConfiguredAndResumedOnce) {
  EXPECT_TRUE([listener_ offer:genuine_]);

  EXPECT_TRUE([genuine_.exportedObject isKindOfClass:[HalvoExportedHandler class]]);
  EXPECT_TRUE(protocol_isEqual(genuine_.exportedInterface.protocol, @protocol(HalvoHelperProtocol)));
  EXPECT_EQ(genuine_.resumeCount, 1);
}

TEST_F(AdmissionTest, TheTokenIsReadOnceDuringAdmissionAndNeverLater) {
  [listener_ offer:genuine_];
  [genuine_.exportedObject pingWithReply:^(NSString*){
  }];

  EXPECT_EQ(genuine_.tokenReads, 1);
}

TEST_F(AdmissionTest, AStrangerIsRefusedAndLeftUnconfigured) {
  EXPECT_FALSE([listener_ offer:stranger_]);

  EXPECT_EQ(stranger_.exportedObject, nil);
  EXPECT_EQ(stranger_.exportedInterface, nil);
  EXPECT_EQ(stranger_.resumeCount, 0);
  EXPECT_THAT(handlers_, IsEmpty());
}

TEST_F(AdmissionTest, ARefusalIsLoggedWithTheProcessIdentifier) {
  const LogCapture log;

  [listener_ offer:stranger_];

  EXPECT_THAT(log.lines(), ElementsAre("halvo-helper: rejected unauthorized client pid=666"));
}

TEST_F(AdmissionTest, AnAdmissionIsNotLogged) {
  const LogCapture log;

  [listener_ offer:genuine_];

  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AdmissionTest, AConnectionWithoutTokenKeyIsRefused) {
  genuine_.withoutTokenKey = YES;

  EXPECT_FALSE([listener_ offer:genuine_]);
}

TEST_F(AdmissionTest, AGenuineClientIsAdmittedAfterARefusedOne) {
  [listener_ offer:stranger_];

  EXPECT_TRUE([listener_ offer:genuine_]);
}

TEST_F(AdmissionTest, EveryConnectionGetsAHandlerOfItsOwn) {
  NSXPCConnection* const second = [[NSXPCConnection alloc] initWithToken:boxed(kSampleToken) processIdentifier:4711];
  [listener_ offer:genuine_];
  [listener_ offer:second];

  [second.exportedObject finalizeRemoval];

  ASSERT_EQ(handlers_.size(), 2U);
  EXPECT_THAT(handlers_[0].lock()->calls, IsEmpty());
  EXPECT_THAT(handlers_[1].lock()->calls, ElementsAre("finalizeRemoval"));
}

TEST_F(AdmissionTest, TheHandlerDiesWithItsConnection) {
  @autoreleasepool {
    NSXPCConnection* const brief = [[NSXPCConnection alloc] initWithToken:boxed(kSampleToken) processIdentifier:1];
    [listener_ offer:brief];
    ASSERT_FALSE(handlers_.front().expired());
  }

  EXPECT_TRUE(handlers_.front().expired());
}

// Would take anybody.
class HospitableDelegate final : public ServiceListenerDelegate {
 public:
  int asked = 0;

  bool shouldAcceptNewConnection(IncomingConnection&) override {
    ++asked;
    return true;
  }
};

TEST_F(AdmissionTest, AMissingConnectionIsRefusedAndTheDelegateNotAsked) {
  const auto hospitable = std::make_shared<HospitableDelegate>();
  HalvoListenerDelegate* const delegate = [[HalvoListenerDelegate alloc] initWithDelegate:hospitable];
  id nothing = nil;

  EXPECT_FALSE([delegate listener:listener_ shouldAcceptNewConnection:nothing]);
  EXPECT_EQ(hospitable->asked, 0);
}

}  // namespace
}  // namespace halvo::sim
