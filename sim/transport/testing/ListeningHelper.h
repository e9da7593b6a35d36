// A helper in this process: a published service with a scripted handler behind it.
#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>

#include "sim/transport/WireFormat.h"
#include "sim/transport/testing/LaunchedService.h"
#include "transport/ServiceListener.h"
#include "transport/contract/AdmittingDelegate.h"
#include "transport/contract/ScriptedHandler.h"

namespace halvo::sim {

class ListeningHelper {
 public:
  ListeningHelper() { startAgain(); }

  [[nodiscard]] std::string socket() const { return service_.socket(); }
  [[nodiscard]] ScriptedHandler& handler() { return *handler_; }

  // Refuses the clients that come from now on.
  void refuseEverybody() { admits_->store(false); }
  // Cuts all connections; the socket stays.
  void stop() { listener_.reset(); }
  void startAgain() {
    listener_ = ServiceListener::forMachService("com.halvo.helper");
    listener_->setDelegate(std::make_shared<AdmittingDelegate>(
        [handler = handler_, admits = admits_] { return admits->load() ? handler : nullptr; }));
    listener_->resume();
  }

  // A connection of the kind that third-party programs make: it greets, and waits for the answer.
  [[nodiscard]] OwnedBus thirdPartyClient() const {
    sd_bus* raw = nullptr;
    sd_bus_new(&raw);
    OwnedBus bus(raw);
    sd_bus_set_bus_client(raw, 1);
    sd_bus_set_address(raw, ("unix:path=" + socket()).c_str());
    if (sd_bus_start(raw) < 0) throw std::runtime_error("cannot connect to " + socket());
    return bus;
  }

 private:
  LaunchedService service_{"com.halvo.helper"};
  std::shared_ptr<ScriptedHandler> handler_ = std::make_shared<ScriptedHandler>();
  std::shared_ptr<std::atomic<bool>> admits_ = std::make_shared<std::atomic<bool>>(true);
  std::unique_ptr<ServiceListener> listener_;
};

}  // namespace halvo::sim
