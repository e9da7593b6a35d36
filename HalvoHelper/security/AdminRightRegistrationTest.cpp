// The right and the simulated authorization database.
#include <Security/Security.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HalvoHelper/security/AdminRight.h"
#include "HalvoHelper/security/CFText.h"
#include "HalvoHelper/security/ScopedAuthorization.h"
#include "HalvoHelper/security/ScopedCF.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/frameworks/testing/FrameworkProbe.h"
#include "sim/support/MachinePaths.h"

namespace halvo {
namespace {

using sim::FrameworkProbe;
using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using testing::Not;
using testing::Optional;
using testing::Pair;

class AdminRightRegistrationTest : public testing::Test {
 protected:
  AdminRightRegistrationTest() { sim::setStateRoot(state_.path()); }

  TemporaryDirectory state_;
  std::int64_t liveBefore_ = FrameworkProbe::liveObjects();
  FrameworkProbe probe_;
};

// Puts under our right what an attacker with root's help could have left there: anybody passes.
void plantHostileRight() {
  AuthorizationRef raw = nullptr;
  AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &raw);
  const ScopedAuthorization reference(raw);
  const ScopedCF<CFStringRef> key = halvoCreateCFString("class");
  const ScopedCF<CFStringRef> value = halvoCreateCFString("allow");
  const void* keys[] = {key.get()};
  const void* values[] = {value.get()};
  const ScopedCF<CFDictionaryRef> definition(CFDictionaryCreate(
      kCFAllocatorDefault, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  const OSStatus status = AuthorizationRightSet(reference.get(), "com.halvo.helper.manage-system", definition.get(),
                                                nullptr, nullptr, nullptr);
  ASSERT_EQ(status, errAuthorizationSuccess);
}

// A definition of the right class with one more key.
ScopedCF<CFDictionaryRef> ourDefinitionWith(CFTypeRef key) {
  const ScopedCF<CFStringRef> className = halvoCreateCFString("class");
  const ScopedCF<CFStringRef> user = halvoCreateCFString("user");
  const void* keys[] = {className.get(), key};
  const void* values[] = {user.get(), kCFBooleanTrue};
  return ScopedCF<CFDictionaryRef>(CFDictionaryCreate(
      kCFAllocatorDefault, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

constexpr const char* kCreate = "AuthorizationCreate flags=0 rights=";
constexpr const char* kFree = "AuthorizationFree flags=0";
constexpr const char* kSet =
    R"(AuthorizationRightSet right=com.halvo.helper.manage-system )"
    R"(prompt="Halvo wants to change its system audio components." bundle=null table=null )"
    R"(definition={"allow-root":false,"authenticate-user":true,"class":"user","group":"admin",)"
    R"("session-owner":false,"shared":false,"timeout":300,"version":1})";

TEST_F(AdminRightRegistrationTest, WritesTheDefinitionWithItsPromptAndFreesTheReference) {
  EXPECT_EQ(halvoRegisterAdminRight(), 0);

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreate, kSet, kFree));
}

TEST_F(AdminRightRegistrationTest, LeavesNoObjectBehind) {
  halvoRegisterAdminRight();
  const auto definition = halvoReadAdminRight();

  EXPECT_NE(definition, std::nullopt);
  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, ReadsBackASoundDefinition) {
  halvoRegisterAdminRight();

  const auto definition = halvoReadAdminRight();

  ASSERT_NE(definition, std::nullopt);
  EXPECT_TRUE(halvoAdminRightIsSound(*definition));
  EXPECT_THAT(*definition, Contains(Pair("timeout", AdminRightValue(std::int64_t{300}))));
  EXPECT_THAT(*definition, Contains(Pair("authenticate-user", AdminRightValue(true))));
}

TEST_F(AdminRightRegistrationTest, RepairsAHostileDefinition) {
  plantHostileRight();
  const auto before = halvoReadAdminRight();

  EXPECT_EQ(halvoRegisterAdminRight(), 0);

  ASSERT_NE(before, std::nullopt);
  EXPECT_FALSE(halvoAdminRightIsSound(*before));
  EXPECT_TRUE(halvoAdminRightIsSound(*halvoReadAdminRight()));
}

TEST_F(AdminRightRegistrationTest, AnswersTheStatusWhenNoReferenceCanBeMade) {
  probe_.failNext("AuthorizationCreate", -60008);

  EXPECT_EQ(halvoRegisterAdminRight(), -60008);

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreate));
  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, RegistersNothingWithoutAReference) {
  probe_.nullNext("AuthorizationCreate");

  EXPECT_EQ(halvoRegisterAdminRight(), 0);

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreate));
  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, RegistersNothingAfterAFailureThoughAReferenceCameWithIt) {
  probe_.failNextWithResult("AuthorizationCreate", -60008);

  EXPECT_EQ(halvoRegisterAdminRight(), -60008);

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreate, kFree));
  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, AnswersTheStatusOfARefusedDefinitionAndFreesTheReference) {
  probe_.failNext("AuthorizationRightSet", -60005);

  EXPECT_EQ(halvoRegisterAdminRight(), -60005);

  EXPECT_THAT(probe_.calls(), ElementsAre(kCreate, kSet, kFree));
  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, LeavesTheOldDefinitionToBeJudgedWhenItCannotBeReplaced) {
  plantHostileRight();
  probe_.failNext("AuthorizationCreate", -60008);

  halvoRegisterAdminRight();

  EXPECT_FALSE(halvoAdminRightIsSound(*halvoReadAdminRight()));
}

TEST_F(AdminRightRegistrationTest, FindsASoundDefinitionOfAnEarlierStart) {
  halvoRegisterAdminRight();
  probe_.failNext("AuthorizationCreate", -60008);

  EXPECT_EQ(halvoRegisterAdminRight(), -60008);

  EXPECT_TRUE(halvoAdminRightIsSound(*halvoReadAdminRight()));
}

TEST_F(AdminRightRegistrationTest, ReadsNothingWhenThereIsNoRight) {
  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);

  EXPECT_THAT(probe_.calls(), ElementsAre("AuthorizationRightGet right=com.halvo.helper.manage-system"));
}

TEST_F(AdminRightRegistrationTest, ReadsNothingWhenTheDatabaseCannotBeAsked) {
  halvoRegisterAdminRight();
  probe_.failNext("AuthorizationRightGet", -60008);

  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);

  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, ReadsNothingWhenNoDictionaryComesBack) {
  halvoRegisterAdminRight();
  probe_.nullNext("AuthorizationRightGet");

  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);
}

TEST_F(AdminRightRegistrationTest, ReadsNothingAfterAFailureThoughADictionaryCameWithIt) {
  halvoRegisterAdminRight();
  probe_.failNextWithResult("AuthorizationRightGet", -60008);

  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);

  EXPECT_EQ(FrameworkProbe::liveObjects(), liveBefore_);
}

TEST_F(AdminRightRegistrationTest, ReadsNothingOfADefinitionWithAKeyThatIsNoText) {
  const auto definition = ourDefinitionWith(kCFBooleanTrue);
  probe_.returnNextRight(definition.get());

  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);
}

TEST_F(AdminRightRegistrationTest, ReadsNothingOfADefinitionWithAKeyThatUtf8CannotHold) {
  const UniChar half = 0xD83D;
  const ScopedCF<CFStringRef> key(CFStringCreateWithCharacters(kCFAllocatorDefault, &half, 1));
  const auto definition = ourDefinitionWith(key.get());
  probe_.returnNextRight(definition.get());

  EXPECT_EQ(halvoReadAdminRight(), std::nullopt);
}

TEST_F(AdminRightRegistrationTest, ReadsADefinitionWhoseKeysAreAllText) {
  const ScopedCF<CFStringRef> key = halvoCreateCFString("extra");
  const auto definition = ourDefinitionWith(key.get());
  probe_.returnNextRight(definition.get());

  EXPECT_THAT(halvoReadAdminRight(), Optional(AdminRightDefinition{{"class", std::string("user")}, {"extra", true}}));
}

TEST_F(AdminRightRegistrationTest, ReadsValuesOfOtherTypesAsOther) {
  halvoRegisterAdminRight();

  const auto definition = halvoReadAdminRight();

  ASSERT_NE(definition, std::nullopt);
  EXPECT_THAT(*definition, Contains(Pair("created", AdminRightValue(AdminRightOther{}))));
  EXPECT_THAT(*definition, Contains(Pair("default-prompt", AdminRightValue(AdminRightOther{}))));
}

}  // namespace
}  // namespace halvo
