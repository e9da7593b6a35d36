#include "HalvoHelper/testing/FaultJudges.h"

namespace halvo {
namespace {

const std::string kRemoved = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
const std::string kIncomplete = R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})";

class UninstallJudge : private FaultPromises {
 public:
  using FaultPromises::FaultPromises;

  std::vector<std::string> breaches() {
    expect("the reply", run_.reply, reply());
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) parts.push_back(part(i));
    expect("the parts", run_.parts, joinedWords(parts));
    expectOthers();
    expectOrder();
    if (!run_.afterwards.empty()) {
      expect("what comes afterwards", run_.afterwards,
             kRemoved + " - - - -, " + kInstalledReply + " newer newer newer newer");
    }
    return breaches_;
  }

 private:
  [[nodiscard]] static std::string removing(std::size_t i) {
    return (isBundle(i) ? "removeTree " : "remove ") + std::string(kMachineParts.at(i));
  }

  [[nodiscard]] std::string part(std::size_t i) const {
    if (!called(removing(i))) return answered() ? kAbsentWord : then_[i];
    if (!faultAt(removing(i))) return kAbsentWord;
    return happensHalfway(faultAt(removing(i))) && then_[i] != kAbsentWord ? "damaged" : then_[i];
  }

  // What is seen to be left decides, and nothing else.
  [[nodiscard]] std::string reply() const {
    if (!answered()) return "";
    const std::vector<std::string> parts = wordsOf(run_.parts);
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) {
      if (parts[i] != kAbsentWord && !faultAt(std::string("exists ") + kMachineParts.at(i))) return kIncomplete;
    }
    return kRemoved;
  }

  void expectOthers() {
    const std::string lock = std::string("remove ") + kDaemonLock;
    for (const auto& [path, word] : run_.others) {
      if (!path.starts_with(kDatabase) && path != kRuntimeDirectory && path != kDaemonLock) expect(path, word, "whole");
    }
    expect(kDaemonLock, run_.others.at(kDaemonLock),
           done(lock) || (answered() && !called(lock)) ? kAbsentWord : "whole");
    for (const char* path : {kRuntimeDirectory, kDatabase}) {
      const bool owed = answered() && !called(std::string("removeTree ") + path);
      expect(path, run_.others.at(path), owed ? kAbsentWord : afterRemovalOf(path));
    }
  }

  // Each job ends before its files go, and the driver goes before the audio daemon looks again.
  void expectOrder() {
    for (const auto& [line, parts] : run_.partsAtTool) {
      if (line.find(" bootout gui/") != std::string::npos)
        expect("what " + line + " finds", parts, run_.road.partsThen);
    }
    if (answered()) expect("the broker's end", called(kBrokerBootout) ? "asked for" : "skipped", "asked for");
    if (answered()) expect("the audio daemon", called(kAudioRestart) ? "restarted" : "left", "restarted");
    if (called(kBrokerBootout)) {
      const std::vector<std::string> parts = wordsOf(run_.partsAtTool.at(kBrokerBootout));
      expect("the broker when it is ended", parts[1] + " " + parts[2], then_[1] + " " + then_[2]);
    }
    if (called(kAudioRestart)) {
      expect("the driver when audio restarts", wordsOf(run_.partsAtTool.at(kAudioRestart))[0], part(0));
    }
  }
};

}  // namespace

std::vector<std::string> breachesOfUninstall(const FaultRun& run) { return UninstallJudge(run).breaches(); }

}  // namespace halvo
