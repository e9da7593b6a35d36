#include "tests/interleaving/MachineScene.h"

#include <utility>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::interleaving {

const std::string& appBundle() {
  static const TemporaryDirectory directory;
  static const std::string bundle = directory.makeDirectory("Halvo.app");
  return bundle;
}

const char* packageOf(Request request) {
  switch (request) {
    case Request::failingInstall:
      return kFailingPackage;
    case Request::evilInstall:
      return kEvilPackage;
    case Request::unstageableInstall:
      return kMissingPackage;
    case Request::install:
    case Request::unauthorizedInstall:
    case Request::uninstall:
    case Request::bundleRemoval:
    case Request::finalRemoval:
      break;
  }
  return kGoodPackage;
}

MachineScene::MachineScene(std::vector<Request> requests, const std::set<Rule>& rules)
    : requests_(std::move(requests)), machine_(std::make_shared<Machine>(appBundle(), rules)) {}

std::vector<std::function<void()>> MachineScene::requests() {
  std::vector<std::function<void()>> work;
  for (const Request request : requests_) {
    work.emplace_back([this, request] {
      make(request);
      machine_->endRun();
    });
  }
  return work;
}

std::vector<std::string> MachineScene::story() const {
  std::vector<std::string> lines;
  std::optional<std::size_t> last;
  std::string begin;
  for (const auto& [number, call] : machine_->calls()) {
    if (number != last) begin = lines.emplace_back(std::string(name(requests_.at(number))) + ": " + call);
    if (number == last) lines.back() = begin + " ... " + call;
    last = number;
  }
  return lines;
}

}  // namespace halvo::interleaving
