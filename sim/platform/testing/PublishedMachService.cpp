#include "platform/contract/PublishedMachService.h"

#include <memory>

#include "sim/platform/testing/LaunchedService.h"

namespace halvo {
namespace {

std::unique_ptr<sim::LaunchedService>& published() {
  static std::unique_ptr<sim::LaunchedService> service;
  return service;
}

}  // namespace

PublishedMachService::PublishedMachService() : name_("com.halvo.contract") {
  published() = std::make_unique<sim::LaunchedService>(name_);
}

PublishedMachService::~PublishedMachService() { published().reset(); }

}  // namespace halvo
