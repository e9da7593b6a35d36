#include "HalvoHelper/security/AdminRight.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace halvo {
namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

TEST(AdminRightDefinitionTest, HoldsEightEntriesOfTheirTypes) {
  EXPECT_THAT(
      halvoAdminRightDefinition(),
      UnorderedElementsAre(
          Pair("class", AdminRightValue(std::string("user"))), Pair("group", AdminRightValue(std::string("admin"))),
          Pair("authenticate-user", AdminRightValue(true)), Pair("allow-root", AdminRightValue(false)),
          Pair("session-owner", AdminRightValue(false)), Pair("shared", AdminRightValue(false)),
          Pair("timeout", AdminRightValue(std::int64_t{300})), Pair("version", AdminRightValue(std::int64_t{1}))));
}

struct SoundnessRow {
  const char* name;
  std::function<void(AdminRightDefinition&)> change;  // made to our own definition
  bool sound;
};

class AdminRightSoundness : public testing::TestWithParam<SoundnessRow> {};

TEST_P(AdminRightSoundness, IsJudgedKeyByKey) {
  AdminRightDefinition definition = halvoAdminRightDefinition();

  GetParam().change(definition);

  EXPECT_EQ(halvoAdminRightIsSound(definition), GetParam().sound);
}

using Definition = AdminRightDefinition;

const AdminRightValue kOne = std::int64_t{1};
const AdminRightValue kZero = std::int64_t{0};
const AdminRightValue kOther = AdminRightOther{};

AdminRightValue text(const char* value) { return std::string(value); }

std::function<void(Definition&)> set(const char* key, AdminRightValue value) {
  return [key, value](Definition& d) { d.insert_or_assign(key, value); };
}
std::function<void(Definition&)> remove(const char* key) {
  return [key](Definition& d) { d.erase(key); };
}

const auto rowName = [](const auto& row) { return row.param.name; };

INSTANTIATE_TEST_SUITE_P(Sound, AdminRightSoundness,
                         testing::Values(SoundnessRow{"OurOwn", [](Definition&) {}, true},
                                         SoundnessRow{"SessionOwnerAbsent", remove("session-owner"), true},
                                         SoundnessRow{"SessionOwnerFalse", set("session-owner", false), true},
                                         SoundnessRow{"SessionOwnerNumber", set("session-owner", kOne), true},
                                         SoundnessRow{"SessionOwnerText", set("session-owner", text("true")), true},
                                         SoundnessRow{"SessionOwnerOther", set("session-owner", kOther), true},
                                         SoundnessRow{"OtherTimeout", set("timeout", std::int64_t{2147483647}), true},
                                         SoundnessRow{"NoTimeout", remove("timeout"), true},
                                         SoundnessRow{"OtherVersion", set("version", std::int64_t{7}), true},
                                         SoundnessRow{"NoVersion", remove("version"), true},
                                         SoundnessRow{"KeysOfTheDatabase", set("created", kOther), true},
                                         SoundnessRow{"ExtraKeys", set("comment", text("x")), true}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(Unsound, AdminRightSoundness,
                         testing::Values(SoundnessRow{"Empty", [](Definition& d) { d.clear(); }, false},
                                         SoundnessRow{"NoClass", remove("class"), false},
                                         SoundnessRow{"ClassAllow", set("class", text("allow")), false},
                                         SoundnessRow{"ClassRule", set("class", text("rule")), false},
                                         SoundnessRow{"ClassInOtherCase", set("class", text("User")), false},
                                         SoundnessRow{"ClassNoText", set("class", true), false},
                                         SoundnessRow{"NoGroup", remove("group"), false},
                                         SoundnessRow{"GroupStaff", set("group", text("staff")), false},
                                         SoundnessRow{"GroupEmpty", set("group", text("")), false},
                                         SoundnessRow{"GroupNoText", set("group", kOther), false},
                                         SoundnessRow{"NoAuthentication", remove("authenticate-user"), false},
                                         SoundnessRow{"AuthenticationFalse", set("authenticate-user", false), false},
                                         SoundnessRow{"AuthenticationNumber", set("authenticate-user", kOne), false},
                                         SoundnessRow{"AuthenticationText", set("authenticate-user", text("true")),
                                                      false},
                                         SoundnessRow{"NoAllowRoot", remove("allow-root"), false},
                                         SoundnessRow{"AllowRootTrue", set("allow-root", true), false},
                                         SoundnessRow{"AllowRootNumber", set("allow-root", kZero), false},
                                         SoundnessRow{"NoShared", remove("shared"), false},
                                         SoundnessRow{"SharedTrue", set("shared", true), false},
                                         SoundnessRow{"SharedNumber", set("shared", kZero), false},
                                         SoundnessRow{"SessionOwnerTrue", set("session-owner", true), false}),
                         rowName);

}  // namespace
}  // namespace halvo
