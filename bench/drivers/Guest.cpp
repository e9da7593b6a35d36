// The client inside the simulated Mac: "pings COUNT", "users COUNT" and "install COUNT PACKAGE MANIFEST" over one
// connection, "connections COUNT" with a ping over each. Answers how many nanoseconds all of them took.
#include "HalvoHelperXPC/Constants.h"
#include "bench/drivers/support/Driver.h"
#include "client/AdminGrant.h"
#include "client/Conversation.h"

namespace halvo::bench {
namespace {

Conversation converse() {
  return Conversation([] { return ServiceClient::forMachService(std::string(kHalvoHelperMachService)); });
}

void expectReply(const Outcome& outcome, const std::string& beginning) {
  const auto* reply = std::get_if<std::string>(&outcome);
  require(reply != nullptr && reply->starts_with(beginning), reply == nullptr ? "no reply" : "the reply is " + *reply);
}

void ping(Conversation& conversation) {
  const auto request = [](auto& helper, const TextReply& text, const BoolReply&) { helper.ping(text); };
  expectReply(conversation.ask(request), "{\"ok\":true,");
}

std::string pings(const Words& words) {
  Conversation conversation = converse();
  return timed([&](const Words&) { ping(conversation); })(words);
}

std::string users(const Words& words) {
  Conversation conversation = converse();
  ping(conversation);
  const auto request = [](auto& helper, const TextReply& text, const BoolReply&) {
    helper.enumerateActiveGuiDomains(text);
  };
  return timed([&](const Words&) { expectReply(conversation.ask(request), "{\"uids\":["); })(words);
}

std::string install(const Words& words) {
  Conversation conversation = converse();
  ping(conversation);
  const auto grant = AdminGrant::obtain();
  require(std::holds_alternative<AdminGrant>(grant), "no administrator's approval");
  const AuthorizationBlob& form = std::get<AdminGrant>(grant).externalForm();
  const auto request = [&](auto& helper, const TextReply& text, const BoolReply&) {
    helper.installSystemPkg(form, words.at(1), words.at(2), false, text);
  };
  return timed([&](const Words&) { expectReply(conversation.ask(request), "{\"code\":\"ok\""); })(words);
}

void connect(const Words& /*words*/) {
  Conversation conversation = converse();
  ping(conversation);
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"pings", pings}, {"connections", timed(connect)}, {"users", users}, {"install", install}}, argc, argv);
}
