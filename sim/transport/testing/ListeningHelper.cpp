#include "sim/transport/testing/ListeningHelper.h"

#include <stdexcept>

namespace halvo::sim {

ListeningHelper::ListeningHelper() : service_("com.halvo.helper") { startAgain(); }

void ListeningHelper::startAgain() {
  listener_ = ServiceListener::forMachService("com.halvo.helper");
  listener_->setDelegate(std::make_shared<AdmittingDelegate>(
      [handler = handler_, admits = admits_] { return admits->load() ? handler : nullptr; }));
  listener_->resume();
}

OwnedBus ListeningHelper::thirdPartyClient() const {
  sd_bus* raw = nullptr;
  sd_bus_new(&raw);
  OwnedBus bus(raw);
  sd_bus_set_bus_client(raw, 1);
  sd_bus_set_address(raw, ("unix:path=" + socket()).c_str());
  if (sd_bus_start(raw) < 0) throw std::runtime_error("cannot connect to " + socket());
  return bus;
}

}  // namespace halvo::sim
