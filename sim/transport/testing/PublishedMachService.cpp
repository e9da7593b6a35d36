#include "transport/contract/PublishedMachService.h"
#include "sim/transport/testing/LaunchedService.h"

namespace halvo {
namespace {

constexpr const char* kName = "com.halvo.contract";

}  // namespace

struct PublishedMachService::State {
  sim::LaunchedService service{kName};
};

PublishedMachService::PublishedMachService() : state_(std::make_shared<State>()) {}
PublishedMachService::~PublishedMachService() = default;

std::unique_ptr<ServiceListener> PublishedMachService::newListener() { return ServiceListener::forMachService(kName); }
std::unique_ptr<ServiceClient> PublishedMachService::newClient() { return ServiceClient::forMachService(kName); }

}  // namespace halvo
