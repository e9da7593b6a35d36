#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/transport/testing/ListeningHelper.h"

namespace halvo::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kObject = "/com/halvo/helper";
constexpr const char* kInterface = "com.halvo.HalvoHelperProtocol";

// What a client gets for a call: the signature of the reply and its first text or boolean, or the name of the error.
struct Answer {
  std::string signature;
  std::string text;
  int boolean = -1;
  std::string error;
};

class ThirdPartyClientTest : public testing::Test {
 protected:
  template <typename... Arguments>
  Answer call(const char* object, const char* interface, const char* member, const char* types,
              Arguments... arguments) {
    sd_bus_error error{};
    sd_bus_message* raw = nullptr;
    const int status =
        sd_bus_call_method(bus.get(), nullptr, object, interface, member, &error, &raw, types, arguments...);
    const OwnedBusMessage reply(raw);
    Answer answer;
    if (status < 0) {
      answer.error = error.name == nullptr ? "no error name" : error.name;
      sd_bus_error_free(&error);
      return answer;
    }
    answer.signature = sd_bus_message_get_signature(raw, 1);
    const char* text = "";
    if (answer.signature == "s") sd_bus_message_read(raw, "s", &text);
    if (answer.signature == "b") sd_bus_message_read(raw, "b", &answer.boolean);
    answer.text = text;
    return answer;
  }

  template <typename... Arguments>
  Answer callHelper(const char* member, const char* types, Arguments... arguments) {
    return call(kObject, kInterface, member, types, arguments...);
  }

  ListeningHelper helper;
  OwnedBus bus = helper.thirdPartyClient();
};

TEST_F(ThirdPartyClientTest, IsGreetedWithAName) {
  const Answer answer = callHelper("pingWithReply_", "");
  const char* name = nullptr;

  EXPECT_EQ(answer.text, "ping");
  EXPECT_GE(sd_bus_get_unique_name(bus.get(), &name), 0);
  EXPECT_STREQ(name, ":1.0");
}

TEST_F(ThirdPartyClientTest, BooleanReplyIsABoolean) {
  const Answer answer = callHelper("removeAppBundleWithPath_withReply_", "s", "/a");

  EXPECT_EQ(answer.signature, "b");
  EXPECT_EQ(answer.boolean, 1);
}

TEST_F(ThirdPartyClientTest, DataOfAWrongLengthPassesThroughUntouched) {
  const Answer answer = callHelper("finalizeRemovalWithAuthorization_withReply_", "ay", 3, 0x00, 0xFF, 0x07);

  EXPECT_EQ(answer.boolean, 1);
  EXPECT_EQ(helper.handler().lastAuthorization(),
            (AuthorizationBlob{std::byte{0x00}, std::byte{0xFF}, std::byte{0x07}}));
}

TEST_F(ThirdPartyClientTest, MessageWithoutReplyIsAnsweredEmptyWhenAReplyIsAskedFor) {
  const Answer answer = callHelper("finalizeRemoval", "");

  EXPECT_EQ(answer.error, "");
  EXPECT_EQ(answer.signature, "");
  EXPECT_THAT(helper.handler().calls(), ElementsAre("finalizeRemoval"));
}

TEST_F(ThirdPartyClientTest, SeesMethodsWithNamedArguments) {
  const Answer answer = call(kObject, "org.freedesktop.DBus.Introspectable", "Introspect", "");

  EXPECT_THAT(answer.text, HasSubstr(R"(  <method name="removeAppBundleWithAuthorization_path_withReply_">
   <arg type="ay" name="authorization" direction="in"/>
   <arg type="s" name="path" direction="in"/>
   <arg type="b" name="reply" direction="out"/>
  </method>)"));
  EXPECT_THAT(answer.text, HasSubstr(R"(  <method name="finalizeRemoval">
   <annotation name="org.freedesktop.DBus.Method.NoReply" value="true"/>)"));
}

struct WrongCallRow {
  const char* name;
  const char* object;
  const char* interface;
  const char* member;
  const char* types;
  const char* error;
};

class WrongCall : public ThirdPartyClientTest, public testing::WithParamInterface<WrongCallRow> {};

TEST_P(WrongCall, IsAnsweredWithAnErrorAndTheConnectionGoesOn) {
  const auto& row = GetParam();
  const Answer answer = call(row.object, row.interface, row.member, row.types, "/a");
  const Answer next = callHelper("pingWithReply_", "");

  EXPECT_EQ(answer.error, row.error);
  EXPECT_EQ(next.text, "ping");
  EXPECT_THAT(helper.handler().calls(), ElementsAre("ping"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, WrongCall,
    testing::Values(
        WrongCallRow{"UnknownMethod", kObject, kInterface, "format", "s", "org.freedesktop.DBus.Error.UnknownMethod"},
        WrongCallRow{"UnknownInterface", kObject, "com.halvo.Other", "pingWithReply_", "s",
                     "org.freedesktop.DBus.Error.UnknownMethod"},
        WrongCallRow{"UnknownObject", "/com/halvo/other", kInterface, "pingWithReply_", "s",
                     "org.freedesktop.DBus.Error.UnknownObject"},
        WrongCallRow{"TooManyArguments", kObject, kInterface, "pingWithReply_", "s",
                     "org.freedesktop.DBus.Error.InvalidArgs"},
        WrongCallRow{"TooFewArguments", kObject, kInterface, "removeAppBundleWithAuthorization_path_withReply_", "s",
                     "org.freedesktop.DBus.Error.InvalidArgs"},
        WrongCallRow{"TextForData", kObject, kInterface, "finalizeRemovalWithAuthorization_withReply_", "s",
                     "org.freedesktop.DBus.Error.InvalidArgs"},
        WrongCallRow{"TextForBoolean", kObject, kInterface, "prepareForRemovalWithAcceptAudioInterruption_withReply_",
                     "s", "org.freedesktop.DBus.Error.InvalidArgs"}),
    [](const testing::TestParamInfo<WrongCallRow>& row) { return row.param.name; });

TEST_F(ThirdPartyClientTest, HandlerThatThrowsIsAnError) {
  helper.handler().onPing = [](const TextReply&) { throw std::bad_alloc(); };

  EXPECT_EQ(callHelper("pingWithReply_", "").error, "org.freedesktop.DBus.Error.Failed");
  EXPECT_EQ(callHelper("enumerateActiveGuiDomainsWithReply_", "").text, "enumerateActiveGuiDomains");
}

TEST_F(ThirdPartyClientTest, ReplyThatTheWireCannotCarryComesRepaired) {
  helper.handler().onPing = [](const TextReply& reply) { reply(std::string("a\0b\xFF", 4)); };

  EXPECT_EQ(callHelper("pingWithReply_", "").text, "a\uFFFDb\uFFFD");
}

TEST_F(ThirdPartyClientTest, CallThatWantsNoReplyGetsNone) {
  sd_bus_message* raw = nullptr;
  sd_bus_message_new_method_call(bus.get(), &raw, nullptr, kObject, kInterface, "enumerateActiveGuiDomainsWithReply_");
  const OwnedBusMessage quiet(raw);
  sd_bus_message_set_expect_reply(raw, 0);
  ASSERT_GE(sd_bus_send(bus.get(), raw, nullptr), 0);

  EXPECT_EQ(callHelper("pingWithReply_", "").text, "ping");
  EXPECT_THAT(helper.handler().calls(), ElementsAre("enumerateActiveGuiDomains", "ping"));
}

}  // namespace
}  // namespace halvo::sim
