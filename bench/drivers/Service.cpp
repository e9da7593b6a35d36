// Listener and client in one process: on a Mac XPC over a listener without a name, elsewhere the simulated transport.
// "pings COUNT" go over one connection, "connections COUNT" are one for each ping.
#include <memory>
#include <string>

#include "bench/drivers/support/Driver.h"
#include "client/Conversation.h"
#include "transport/contract/AdmittingDelegate.h"
#include "transport/contract/PublishedMachService.h"
#include "transport/contract/ScriptedHandler.h"

namespace halvo::bench {
namespace {

class Service {
 public:
  Service() {
    listener_->setDelegate(std::make_shared<AdmittingDelegate>([] { return std::make_shared<ScriptedHandler>(); }));
    listener_->resume();
  }

  Conversation converse() {
    return Conversation([this] { return service_.newClient(); });
  }

 private:
  PublishedMachService service_;
  const std::unique_ptr<ServiceListener> listener_ = service_.newListener();
};

void ping(Conversation& conversation) {
  const auto request = [](auto& helper, const TextReply& text, const BoolReply&) { helper.ping(text); };
  require(conversation.ask(request) == Outcome("ping"), "no reply");
}

std::string pings(const Words& words) {
  Service service;
  Conversation conversation = service.converse();
  ping(conversation);
  return timed([&](const Words&) { ping(conversation); })(words);
}

std::string connections(const Words& words) {
  Service service;
  return timed([&](const Words&) {
    Conversation conversation = service.converse();
    ping(conversation);
  })(words);
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"pings", pings}, {"connections", connections}}, argc, argv);
}
