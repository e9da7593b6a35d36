#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "sim/transport/WireFormat.h"
#include "sim/transport/testing/LaunchedService.h"
#include "sim/transport/testing/ListeningHelper.h"
#include "transport/ServiceClient.h"
#include "transport/contract/Answers.h"

namespace halvo::sim {
namespace {

std::size_t entriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// How many threads and descriptors this process has.
struct Resources {
  std::size_t threads;
  std::size_t descriptors;
  bool fitsInto(const Resources& bound) const { return threads <= bound.threads && descriptors <= bound.descriptors; }
};

Resources resources() { return {entriesOf("/proc/self/task"), entriesOf("/proc/self/fd")}; }

// Connections that are just ending may be in either count; hundreds of leaked ones may not.
Resources aFewMoreThan(const Resources& counted) { return {counted.threads + 4, counted.descriptors + 16}; }

// Whether no more than `before` is left, now or within half a minute: the last connections end on threads of their own.
bool settlesTo(const Resources& before) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (std::chrono::steady_clock::now() < deadline) {
    if (resources().fitsInto(before)) return true;
    std::this_thread::yield();
  }
  return false;
}

void connectAndPing(const ListeningHelper& helper) {
  const OwnedBus bus = helper.thirdPartyClient();
  sd_bus_call_method(bus.get(), nullptr, kHelperObject, kHelperInterface, "pingWithReply_", nullptr, nullptr, "");
}

void connectAndLeave(const ListeningHelper& helper) { sendRaw(connectRaw(helper.socket()), authentication()); }

TEST(ConnectionLifeTest, FinishedConnectionsLeaveNoThreadAndNoDescriptor) {
  ListeningHelper helper;
  connectAndPing(helper);
  const Resources bound = aFewMoreThan(resources());

  for (int i = 0; i < 200; ++i) connectAndPing(helper);
  for (int i = 0; i < 200; ++i) connectAndLeave(helper);

  EXPECT_TRUE(settlesTo(bound));
}

TEST(ConnectionLifeTest, RefusedConnectionsLeaveNoThreadAndNoDescriptor) {
  ListeningHelper helper;
  connectAndPing(helper);
  const Resources bound = aFewMoreThan(resources());
  helper.refuseEverybody();

  for (int i = 0; i < 200; ++i) connectAndLeave(helper);

  EXPECT_TRUE(settlesTo(bound));
}

TEST(ConnectionLifeTest, ReplyIsInTheSocketWhenTheReplyFunctionReturns) {
  ListeningHelper helper;
  const OwnedBus bus = helper.thirdPartyClient();
  Answers waiting;
  helper.handler().onPing = [note = waiting.text(), client = sd_bus_get_fd(bus.get())](const TextReply& reply) {
    int before = -1;
    int after = -1;
    ::ioctl(client, FIONREAD, &before);
    reply("done");
    ::ioctl(client, FIONREAD, &after);
    note(std::to_string(before) + (after > before ? " then more" : " then none"));
  };
  sd_bus_message* raw = nullptr;
  ASSERT_GE(sd_bus_call_method(bus.get(), nullptr, kHelperObject, kHelperInterface,
                               "enumerateActiveGuiDomainsWithReply_", nullptr, nullptr, ""),
            0);
  sd_bus_message_new_method_call(bus.get(), &raw, nullptr, kHelperObject, kHelperInterface, "pingWithReply_");
  const OwnedBusMessage ping(raw);
  std::uint64_t cookie = 0;  // whoever does not ask for it wants no reply
  sd_bus_send(bus.get(), raw, &cookie);
  sd_bus_flush(bus.get());

  EXPECT_EQ(waiting.next(), "text 0 then more");
}

TEST(ConnectionLifeTest, HelperThatEndsInTheMiddleOfAMessageInterruptsItsClient) {
  ListeningHelper helper;
  Answers answers;
  Answers entered;
  std::promise<void> release;
  helper.handler().onPing = [note = entered.text(), go = release.get_future().share()](const TextReply& reply) {
    note("entered");
    go.wait_for(std::chrono::seconds(30));
    reply("too late");
  };
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  client->proxy(answers.failure())->ping(answers.text());
  ASSERT_EQ(entered.next(), "text entered");

  std::thread end([&] { helper.stop(); });
  const std::string answer = answers.next();
  release.set_value();
  end.join();

  EXPECT_EQ(answer, "interrupted");
}

TEST(ConnectionLifeTest, MessageAfterAnInterruptionConnectsAnew) {
  ListeningHelper helper;
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  const auto proxy = client->proxy(answers.failure());
  const Resources unconnected = resources();
  proxy->ping(answers.text());
  ASSERT_EQ(answers.next(), "text ping");
  helper.stop();
  helper.startAgain();
  // Once the client has noticed and closed its end, too.
  ASSERT_TRUE(settlesTo(unconnected));
  proxy->enumerateActiveGuiDomains(answers.text());

  EXPECT_EQ(answers.next(), "text enumerateActiveGuiDomains");
}

TEST(ConnectionLifeTest, ListenerWithoutASocketAdmitsNobody) {
  const auto listener = ServiceListener::forMachService("com.halvo.nobody");
  listener->setDelegate(std::make_shared<AdmittingDelegate>([] { return std::make_shared<ScriptedHandler>(); }));
  listener->resume();
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.nobody");
  client->proxy(answers.failure())->ping(answers.text());

  EXPECT_EQ(answers.next(), "unreachable");
}

// Admits, but does not do what belongs to it.
class ForgetfulDelegate final : public ServiceListenerDelegate {
 public:
  bool shouldAcceptNewConnection(IncomingConnection& connection) override {
    connection.exportHandler(std::make_shared<ScriptedHandler>());
    return true;
  }
};

TEST(ConnectionLifeTest, RefusedClientIsClosedWithoutAWord) {
  ListeningHelper helper;
  helper.refuseEverybody();
  const UniqueDescriptor socket = connectRaw(helper.socket());
  sendRaw(socket, authentication());

  const Received received = receiveUntilClosed(socket);

  EXPECT_TRUE(received.closed);
  EXPECT_EQ(received.bytes, "");
  EXPECT_THAT(helper.handler().calls(), testing::IsEmpty());
}

TEST(ConnectionLifeTest, TextWithANulIsNotSent) {
  ListeningHelper helper;
  Answers answers;
  const auto client = ServiceClient::forMachService("com.halvo.helper");
  client->proxy(answers.failure())->removeAppBundle(std::string("/a\0b", 4), answers.boolean());

  EXPECT_EQ(answers.next(), "rejected");
  EXPECT_THAT(helper.handler().calls(), testing::IsEmpty());
}

TEST(ConnectionLifeTest, ConnectionThatWasNotResumedIsClosedUnread) {
  const LaunchedService service("com.halvo.helper");
  const auto listener = ServiceListener::forMachService("com.halvo.helper");
  listener->setDelegate(std::make_shared<ForgetfulDelegate>());
  listener->resume();
  const UniqueDescriptor socket = connectRaw(service.socket());
  sendRaw(socket, authentication());

  const Received received = receiveUntilClosed(socket);

  EXPECT_TRUE(received.closed);
  EXPECT_EQ(received.bytes, "");
}

}  // namespace
}  // namespace halvo::sim
