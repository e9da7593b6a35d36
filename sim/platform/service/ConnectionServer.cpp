#include "sim/platform/service/ConnectionServer.h"

#include <poll.h>

#include <algorithm>
#include <thread>

#include "sim/platform/service/BusHandles.h"
#include "sim/platform/service/MessageGate.h"
#include "sim/platform/service/MethodTable.h"
#include "sim/platform/service/ServerHandshake.h"

namespace halvo::sim {
namespace {

using std::chrono::milliseconds;

void waitForInput(int socket) {
  pollfd input{.fd = socket, .events = POLLIN, .revents = 0};
  static_cast<void>(::poll(&input, 1, -1));
}

class ConnectionServer {
 public:
  ConnectionServer(int socket, sd_bus* bus, milliseconds patience) : socket_(socket), bus_(bus), patience_(patience) {}

  void run() {
    if (sd_bus_add_filter(bus_, nullptr, noteMessage, this) < 0) return;
    while (readNext()) {
    }
  }

 private:
  // Called for every whole message, before it is handled.
  static int noteMessage(sd_bus_message* /*message*/, void* server, sd_bus_error* /*error*/) {
    static_cast<ConnectionServer*>(server)->betweenMessages_ = true;
    return 0;
  }

  // False when the connection is over.
  bool readNext() {
    if (!betweenMessages_) return process();
    switch (lookAtNextMessage(socket_)) {
      case NextMessage::none:
        waitForInput(socket_);
        return true;
      case NextMessage::incomplete:
        return waitForRestOfHeader();
      case NextMessage::acceptable:
        partialHeaderFor_ = milliseconds(0);
        betweenMessages_ = false;
        return process();
      case NextMessage::tooLarge:
      case NextMessage::ended:
        return false;
    }
    return false;
  }

  bool process() {
    const int status = sd_bus_process(bus_, nullptr);
    if (status == 0) waitForInput(socket_);
    // Written out here, so that the library never has to be called for writing alone: it would read, too.
    return status >= 0 && sd_bus_flush(bus_) >= 0;
  }

  // The socket stays readable meanwhile, so there is nothing to wait for but time. An honest client's header comes in
  // one piece, or in two at once.
  bool waitForRestOfHeader() {
    constexpr milliseconds kLongest(50);
    const milliseconds pause = std::clamp(partialHeaderFor_, milliseconds(1), kLongest);
    std::this_thread::sleep_for(pause);
    partialHeaderFor_ += pause;
    return partialHeaderFor_ < patience_;
  }

  const int socket_;
  sd_bus* const bus_;
  const milliseconds patience_;
  milliseconds partialHeaderFor_{0};
  bool betweenMessages_ = true;
};

}  // namespace

void serveConnection(int socket, HalvoHelperProtocol& handler, milliseconds patience) {
  MethodTable methods(handler);
  const OwnedBus bus = openServerBus(socket, patience);
  if (!bus || !methods.addTo(bus.get())) return;
  ConnectionServer(socket, bus.get(), patience).run();
}

}  // namespace halvo::sim
