#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/testing/FaultJudges.h"

namespace halvo {
namespace {

const std::string kRolledBack = R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})";
const std::string kNotStaged = R"({"code":"untrusted_package","reason":"staging_failed"})";
const std::string kMakeStaging = std::string("makePrivateDir ") + kStagingRoot + " 700";
const std::string kStage = std::string("stageFile /Users/ada/Halvo.pkg -> ") + kStagedPackage;
const std::string kCheck = std::string("run /usr/sbin/pkgutil --check-signature ") + kStagedPackage;
const std::string kInstaller = std::string("run /usr/sbin/installer -pkg ") + kStagedPackage + " -target /";
const std::string kBootstrap = std::string("run /bin/launchctl bootstrap system ") + kBrokerPlistPath;
const std::string kCleanUp = std::string("removeTree ") + kStagingRoot;

class InstallJudge : private FaultPromises {
 public:
  using FaultPromises::FaultPromises;

  std::vector<std::string> breaches() {
    expect("the reply", run_.reply, reply());
    std::vector<std::string> parts;
    std::vector<std::string> saved;
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) {
      parts.push_back(part(i));
      saved.push_back(savedPart(i));
    }
    expect("the parts", run_.parts, joinedWords(parts));
    expect("the snapshot", run_.snapshot, joinedWords(saved));
    expect("the staging directory", run_.staging, staging());
    expectOthers();
    expectRestarts();
    if (!run_.afterwards.empty()) expect("what comes afterwards", run_.afterwards, afterwards());
    return breaches_;
  }

 private:
  [[nodiscard]] static std::string savedPath(std::size_t i) {
    return std::string(kSnapshotOfRun) + "/" + halvoLastPathComponent(kMachineParts.at(i));
  }
  [[nodiscard]] static std::string saving(std::size_t i) {
    return std::string("copyTree ") + kMachineParts.at(i) + " -> " + savedPath(i);
  }
  [[nodiscard]] static std::string restoring(std::size_t i) {
    return "copyTree " + savedPath(i) + " -> " + kMachineParts.at(i);
  }

  [[nodiscard]] bool reachesInstaller() const { return !faultAt(kMakeStaging) && !faultAt(kStage) && !faultAt(kCheck); }
  [[nodiscard]] bool installerSucceeds() const {
    return run_.road.installerStatus == 0 &&
           !isOneOf(faultAt(kInstaller),
                    {Fault::fails, Fault::failsHalfway, Fault::failsAfterwards, Fault::crashes, Fault::cannotStart});
  }

  [[nodiscard]] std::string reply() const {
    if (!answered()) return "";
    if (faultAt(kMakeStaging) || faultAt(kStage)) return kNotStaged;
    if (const auto fault = faultAt(kCheck)) {
      const bool wordless = isOneOf(fault, {Fault::saysNothing, Fault::crashes});
      return std::string(R"({"code":"untrusted_package","reason":")") + (wordless ? "unreadable" : "unsigned") + "\"}";
    }
    return installerSucceeds() ? kInstalledReply : kRolledBack;
  }

  // Nothing touches a part before the installer; it is judged by what it leaves.
  [[nodiscard]] std::string leftByInstaller(std::size_t i) const {
    const auto fault = faultAt(kInstaller);
    if (!called(kInstaller)) return then_[i];
    if (isOneOf(fault, {Fault::fails, Fault::cannotStart, Fault::throws, Fault::dies})) return then_[i];
    const bool half = isOneOf(fault, {Fault::failsHalfway, Fault::crashes, Fault::diesHalfway});
    return half && i >= 2 ? then_[i] : "new";
  }

  [[nodiscard]] std::string savedPart(std::size_t i) const {
    if (then_[i] == kAbsentWord || faultAt(std::string("exists ") + kMachineParts.at(i))) return kAbsentWord;
    if (!called(saving(i))) return reachesInstaller() && answered() ? "old" : kAbsentWord;
    if (!faultAt(saving(i))) return "old";
    return faultAt(saving(i)) == Fault::diesHalfway ? "damaged" : kAbsentWord;
  }

  // A part that was saved comes back; any other stays as the installer left it.
  [[nodiscard]] std::string part(std::size_t i) const {
    const std::string left = leftByInstaller(i);
    if (!reachesInstaller() || savedPart(i) != "old" || faultAt("exists " + savedPath(i))) return left;
    if (!answered() && !called(restoring(i))) return left;
    if (answered() && installerSucceeds()) return left;
    const auto fault = faultAt(restoring(i));
    if (!fault) return "old";
    if (fault == Fault::failsCleared) return kAbsentWord;
    if (fault == Fault::diesHalfway) return "damaged";
    if (fault == Fault::failsHalfway) return isBundle(i) && left != kAbsentWord ? "damaged" : kAbsentWord;
    return left;
  }

  // Nothing of it is left, unless it could not be removed or the process has ended.
  [[nodiscard]] std::string staging() const {
    const auto making = faultAt(kMakeStaging);
    if (making) return happensHalfway(making) ? "empty" : kAbsentWord;
    if (!called(kMakeStaging) || done(kCleanUp)) return kAbsentWord;
    if (!called(kCleanUp) && run_.end != FaultRun::End::killed) return kAbsentWord;
    const bool packageLeft = done(kStage) || faultAt(kStage) == Fault::diesHalfway;
    return packageLeft && !happensHalfway(faultAt(kCleanUp)) ? "package" : "empty";
  }

  // Only snapshots of more than seven days go.
  void expectOthers() {
    for (const auto& [path, word] : run_.others) {
      if (path != kStaleSnapshot && path != kDatabase) expect(path, word, "whole");
    }
    const std::string line = std::string("removeTree ") + kStaleSnapshot;
    const bool missed = faultAt("entries /var/db/halvo/install-rollback") ||
                        faultAt(std::string("modifiedDaysAgo ") + kStaleSnapshot) || !reachesInstaller() || !answered();
    expect(kStaleSnapshot, run_.others.at(kStaleSnapshot),
           called(line) || missed ? afterRemovalOf(kStaleSnapshot) : kAbsentWord);
  }

  // The broker starts again in any case, and on the parts as they are in the end; the rest only after a success.
  void expectRestarts() {
    const bool restarts = answered() && reachesInstaller();
    if (restarts) expect("the broker's end", called(kBrokerBootout) ? "asked for" : "skipped", "asked for");
    if (restarts) expect("the broker's start", called(kBootstrap) ? "asked for" : "skipped", "asked for");
    if (called(kBootstrap)) expect("what the broker starts on", run_.partsAtTool.at(kBootstrap), run_.parts);
    const bool audio = installerSucceeds() && restarts;
    if (answered())
      expect("the audio daemon", called(kAudioRestart) ? "restarted" : "left", audio ? "restarted" : "left");
  }

  // A staged package that was left costs one install.
  [[nodiscard]] std::string afterwards() const {
    const std::string installed = kInstalledReply + " newer newer newer newer";
    if (run_.staging != "package") return installed;
    return kNotStaged + " " + run_.parts + ", " + installed;
  }
};

}  // namespace

std::vector<std::string> breachesOfInstall(const FaultRun& run) { return InstallJudge(run).breaches(); }

}  // namespace halvo
