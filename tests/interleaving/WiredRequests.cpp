#include <span>
#include <utility>

#include "HalvoHelper/testing/RefusedIdleSleep.h"
#include "main/OperationWiring.h"
#include "tests/interleaving/MachineScene.h"
#include "tests/interleaving/Turns.h"

namespace halvo::interleaving {
namespace {

const AuthorizationBlob kGranted = {std::byte{1}};
const AuthorizationBlob kDenied = {std::byte{0}};

class AskedAuthorizer final : public AdminAuthorizer {
 public:
  explicit AskedAuthorizer(std::shared_ptr<Machine> machine) : machine_(std::move(machine)) {}

  bool isAuthorized(std::span<const std::byte> externalForm) const override {
    if (!Turns::boundary()) return false;
    const bool granted = externalForm.front() == kGranted.front();
    if (!granted) machine_->refuse();
    Turns::told(granted ? "granted" : "refused");
    return granted;
  }

 private:
  std::shared_ptr<Machine> machine_;
};

class WiredScene final : public MachineScene {
 public:
  WiredScene(std::vector<Request> requests, const std::set<Rule>& rules)
      : MachineScene(std::move(requests), rules),
        wiring_(std::make_shared<const OperationWiring>(
            SystemAdapters{
                .runner = tools(),
                .launchctl = Launchctl(tools()),
                .fs = fs(),
                .audio = audio(),
                .installer = Installer(tools()),
                .verifier = PkgVerifier(tools()),
                .sleep = std::make_shared<const RefusedIdleSleep>(),
                .ending = ending(),
            },
            std::make_shared<const AskedAuthorizer>(machine()), true,
            std::make_shared<ActivityTracker>([] { return 0.0; }),
            // Where no file can be: what is written there is no part of what is explored.
            OperationFiles{.installLog = "/dev/null/install.log",
                           .uninstallLog = "/dev/null/uninstall.log",
                           .driverPlist = "/dev/null/Info.plist"})) {}

 protected:
  void make(Request request) override {
    const auto handler = wiring_->makeHandler();
    // No boundary lies between the end of an operation and its reply.
    const auto text = [this](const std::string&) { machine()->endRun(); };
    switch (request) {
      case Request::uninstall:
        return handler->prepareForRemoval(kGranted, false, text);
      case Request::bundleRemoval:
        return handler->removeAppBundle(kGranted, appBundle(), [this](bool) { machine()->endRun(); });
      case Request::finalRemoval:
        return handler->finalizeRemoval(kGranted, [](bool) { Turns::boundary(); });
      case Request::unauthorizedInstall:
        return handler->installSystemPkg(kDenied, packageOf(request), "{}", false, text);
      case Request::install:
      case Request::failingInstall:
      case Request::evilInstall:
      case Request::unstageableInstall:
        return handler->installSystemPkg(kGranted, packageOf(request), "{}", false, text);
    }
  }

 private:
  // The main queue's work goes on in the thread of the request, after a boundary: it may begin at any time.
  HelperEnding ending() {
    return {
        .runAfter =
            [](std::chrono::nanoseconds, const std::function<void()>& work) {
              Turns::boundary();
              work();
            },
        .unregister = [this](std::string_view) { return machine()->begin("unregister"), std::optional<std::string>(); },
        .exit =
            [this] {
              if (machine()->begin("exit")) machine()->endProcess();
            },
    };
  }

  std::shared_ptr<const OperationWiring> wiring_;
};

}  // namespace

Explorer::SceneMaker wired(const std::vector<Request>& requests, const std::set<Rule>& rules) {
  return [requests, rules] { return std::make_unique<WiredScene>(requests, rules); };
}

}  // namespace halvo::interleaving
