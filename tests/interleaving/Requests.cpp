#include "tests/interleaving/Requests.h"

#include <functional>
#include <span>
#include <utility>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/removal/AppBundleRemoval.h"
#include "HalvoHelper/removal/FinalRemoval.h"
#include "HalvoHelper/removal/UninstallSequence.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "main/OperationWiring.h"
#include "tests/interleaving/Turns.h"

namespace halvo::interleaving {
namespace {

const AuthorizationBlob kGranted = {std::byte{1}};
const AuthorizationBlob kDenied = {std::byte{0}};

// The wiring resolves the path on the real disk; what lies in it is in memory.
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

class MachineScene : public Scene {
 public:
  MachineScene(std::vector<Request> requests, const std::set<Rule>& rules)
      : requests_(std::move(requests)), machine_(std::make_shared<Machine>(appBundle(), rules)) {}

  std::vector<std::function<void()>> requests() override {
    std::vector<std::function<void()>> work;
    for (const Request request : requests_) {
      work.emplace_back([this, request] {
        make(request);
        machine_->endRun();
      });
    }
    return work;
  }

  std::string state() const override { return machine_->state(); }
  std::optional<std::string> violation() const override { return machine_->violation(); }
  bool ended() const override { return machine_->ended(); }

  // Of each turn the first and the last call.
  std::vector<std::string> story() const override {
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

 protected:
  virtual void make(Request request) = 0;

  [[nodiscard]] const std::shared_ptr<Machine>& machine() const { return machine_; }
  [[nodiscard]] std::shared_ptr<const PrivilegedFS> fs() const { return std::make_shared<WatchedFS>(machine_); }
  [[nodiscard]] std::shared_ptr<const ProcessRunner> tools() const { return std::make_shared<WatchedTools>(machine_); }
  [[nodiscard]] static AudioActivity audio() { return AudioActivity(std::make_shared<const WatchedAudio>()); }

 private:
  std::vector<Request> requests_;
  std::shared_ptr<Machine> machine_;
};

class SequenceScene final : public MachineScene {
 public:
  using MachineScene::MachineScene;

 protected:
  void make(Request request) override {
    const auto ignore = [](const std::string&) { Turns::boundary(); };
    const auto nobody = [] { return Turns::boundary(), std::vector<std::int64_t>(); };
    switch (request) {
      case Request::uninstall:
        static_cast<void>(UninstallSequence{.fs = fs(),
                                            .launchctl = Launchctl(tools()),
                                            .runner = tools(),
                                            .audio = audio(),
                                            .activeGuiUids = nobody,
                                            .guiAppPath = "",
                                            .logPath = "",
                                            .log = ignore}
                              .run(false));
        return;
      case Request::bundleRemoval:
        static_cast<void>(halvoRemoveAppBundle(
            appBundle(), *fs(), [](const std::string& path) { return Turns::boundary(), std::optional(path); },
            [](std::string_view) { Turns::boundary(); }));
        return;
      case Request::finalRemoval:
        halvoFinalizeRemoval([this] { return machine()->begin("unregister"), std::optional<std::string>(); },
                             Launchctl(tools()), ignore, [] { Turns::boundary(); });
        return;
      case Request::install:
      case Request::failingInstall:
      case Request::evilInstall:
      case Request::unstageableInstall:
      case Request::unauthorizedInstall:
        break;
    }
    static_cast<void>(InstallSequence{
        .fs = fs(),
        .launchctl = Launchctl(tools()),
        .installer = Installer(tools()),
        .verifier = PkgVerifier(tools()),
        .teamID = "QX4TRM2ZL9",
        .audio = audio(),
        .installedDriverVersion = [] { return Turns::boundary(), std::optional<std::string>("1.0"); },
        .pkgPath = packageOf(request),
        .manifestJSON = R"({"driver_version":"2.0"})",
        .epoch = [] { return Turns::boundary(), std::int64_t{1'771'000'000}; },
        .activeGuiUids = nobody,
        .logPath = "",
        .log = ignore,
    }
                          .run(false));
  }
};

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

void addCombinations(std::size_t size, std::size_t first, std::vector<Request>& chosen,
                     std::vector<std::vector<Request>>& all) {
  if (chosen.size() == size) {
    all.push_back(chosen);
    return;
  }
  for (std::size_t next = first; next < kEveryRequest.size(); ++next) {
    chosen.push_back(kEveryRequest.at(next));
    addCombinations(size, next, chosen, all);
    chosen.pop_back();
  }
}

}  // namespace

std::string_view name(Request request) {
  switch (request) {
    case Request::install:
      return "install";
    case Request::failingInstall:
      return "failing install";
    case Request::evilInstall:
      return "evil install";
    case Request::unstageableInstall:
      return "unstageable install";
    case Request::unauthorizedInstall:
      return "unauthorized install";
    case Request::uninstall:
      return "uninstall";
    case Request::bundleRemoval:
      return "bundle removal";
    case Request::finalRemoval:
      return "final removal";
  }
  return {};
}

Explorer::SceneMaker sequences(const std::vector<Request>& requests, const std::set<Rule>& rules) {
  return [requests, rules] { return std::make_unique<SequenceScene>(requests, rules); };
}

Explorer::SceneMaker wired(const std::vector<Request>& requests, const std::set<Rule>& rules) {
  return [requests, rules] { return std::make_unique<WiredScene>(requests, rules); };
}

std::vector<std::vector<Request>> combinations(std::size_t size) {
  std::vector<std::vector<Request>> all;
  std::vector<Request> chosen;
  addCombinations(size, 0, chosen, all);
  return all;
}

}  // namespace halvo::interleaving
