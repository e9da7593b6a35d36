#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/removal/AppBundleRemoval.h"
#include "HalvoHelper/removal/FinalRemoval.h"
#include "HalvoHelper/removal/UninstallSequence.h"
#include "tests/interleaving/MachineScene.h"
#include "tests/interleaving/Turns.h"

namespace halvo::interleaving {
namespace {

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

}  // namespace

Explorer::SceneMaker sequences(const std::vector<Request>& requests, const std::set<Rule>& rules) {
  return [requests, rules] { return std::make_unique<SequenceScene>(requests, rules); };
}

}  // namespace halvo::interleaving
