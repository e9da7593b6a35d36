#include "HalvoHelper/testing/FaultJudge.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <sstream>

#include "HalvoHelper/system/PathStrings.h"

namespace halvo {
namespace {

const std::string kAbsent = "-";
const std::string kInstalled = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
const std::string kRolledBack = R"({"code":"rolled_back","log_path":"/var/log/halvo-install.log"})";
const std::string kNotStaged = R"({"code":"untrusted_package","reason":"staging_failed"})";
const std::string kRemoved = R"({"code":"ok","gui_app_path":"/Applications/Halvo.app"})";
const std::string kIncomplete = R"({"code":"incomplete","log_path":"/var/log/halvo-uninstall.log"})";

const std::string kMakeStaging = std::string("makePrivateDir ") + kStagingRoot + " 700";
const std::string kStage = std::string("stageFile /Users/ada/Halvo.pkg -> ") + kStagedPackage;
const std::string kCheck = std::string("run /usr/sbin/pkgutil --check-signature ") + kStagedPackage;
const std::string kInstaller = std::string("run /usr/sbin/installer -pkg ") + kStagedPackage + " -target /";
const std::string kBootout = "run /bin/launchctl bootout system/com.halvo.broker";
const std::string kBootstrap = std::string("run /bin/launchctl bootstrap system ") + kBrokerPlistPath;
const std::string kRestartAudio = "run /usr/bin/killall coreaudiod";
const std::string kCleanUp = std::string("removeTree ") + kStagingRoot;

using Words = std::vector<std::string>;

Words split(const std::string& line) {
  std::istringstream stream(line);
  return Words(std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>());
}

std::string joined(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

bool isOneOf(std::optional<Fault> fault, std::initializer_list<Fault> faults) {
  return fault && std::ranges::find(faults, *fault) != faults.end();
}

// Whether half of the part can be gone; the others are one file each.
bool isBundle(std::size_t part) { return part == 0; }

bool happensHalfway(std::optional<Fault> fault) { return isOneOf(fault, {Fault::failsHalfway, Fault::diesHalfway}); }

// What both judges ask of a run.
class Judge {
 public:
  explicit Judge(const FaultRun& run) : run_(run), then_(split(run.road.partsThen)) {}

 protected:
  [[nodiscard]] bool called(const std::string& line) const {
    return std::ranges::any_of(run_.calls, [&](const Call& call) { return call.line == line; });
  }
  [[nodiscard]] std::optional<Fault> faultAt(const std::string& line) const {
    for (const auto& [number, fault] : run_.faults) {
      if (number < run_.calls.size() && run_.calls[number].line == line) return fault;
    }
    return std::nullopt;
  }
  [[nodiscard]] bool done(const std::string& line) const { return called(line) && !faultAt(line); }
  [[nodiscard]] bool answered() const { return run_.end == FaultRun::End::answered; }

  // What a removal of a tree leaves; it is not half removed if it holds one file only.
  [[nodiscard]] std::string afterRemovalOf(const std::string& path) const {
    const std::string line = "removeTree " + path;
    if (!called(line)) return "whole";
    if (!faultAt(line)) return kAbsent;
    return happensHalfway(faultAt(line)) ? "part" : "whole";
  }

  void expect(const std::string& what, const std::string& is, const std::string& promised) {
    if (is != promised) breaches_.push_back(what + " is \"" + is + "\", promised is \"" + promised + "\"");
  }

  const FaultRun& run_;
  Words then_;
  Words breaches_;
};

class InstallJudge : private Judge {
 public:
  using Judge::Judge;

  Words breaches() {
    expect("the reply", run_.reply, reply());
    Words parts;
    Words saved;
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) {
      parts.push_back(part(i));
      saved.push_back(savedPart(i));
    }
    expect("the parts", run_.parts, joined(parts));
    expect("the snapshot", run_.snapshot, joined(saved));
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
    return installerSucceeds() ? kInstalled : kRolledBack;
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
    if (then_[i] == kAbsent || faultAt(std::string("exists ") + kMachineParts.at(i))) return kAbsent;
    if (!called(saving(i))) return reachesInstaller() && answered() ? "old" : kAbsent;
    if (!faultAt(saving(i))) return "old";
    return faultAt(saving(i)) == Fault::diesHalfway ? "damaged" : kAbsent;
  }

  // A part that was saved comes back; any other stays as the installer left it.
  [[nodiscard]] std::string part(std::size_t i) const {
    const std::string left = leftByInstaller(i);
    if (!reachesInstaller() || savedPart(i) != "old" || faultAt("exists " + savedPath(i))) return left;
    if (!answered() && !called(restoring(i))) return left;
    if (answered() && installerSucceeds()) return left;
    const auto fault = faultAt(restoring(i));
    if (!fault) return "old";
    if (fault == Fault::failsCleared) return kAbsent;
    if (fault == Fault::diesHalfway) return "damaged";
    if (fault == Fault::failsHalfway) return isBundle(i) && left != kAbsent ? "damaged" : kAbsent;
    return left;
  }

  // Nothing of it is left, unless it could not be removed or the process has ended.
  [[nodiscard]] std::string staging() const {
    const auto making = faultAt(kMakeStaging);
    if (making) return happensHalfway(making) ? "empty" : kAbsent;
    if (!called(kMakeStaging) || done(kCleanUp)) return kAbsent;
    if (!called(kCleanUp) && run_.end != FaultRun::End::killed) return kAbsent;
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
           called(line) || missed ? afterRemovalOf(kStaleSnapshot) : kAbsent);
  }

  // The broker starts again in any case, and on the parts as they are in the end; the rest only after a success.
  void expectRestarts() {
    const bool restarts = answered() && reachesInstaller();
    if (restarts) expect("the broker's end", called(kBootout) ? "asked for" : "skipped", "asked for");
    if (restarts) expect("the broker's start", called(kBootstrap) ? "asked for" : "skipped", "asked for");
    if (called(kBootstrap)) expect("what the broker starts on", run_.partsAtTool.at(kBootstrap), run_.parts);
    const bool audio = installerSucceeds() && restarts;
    if (answered())
      expect("the audio daemon", called(kRestartAudio) ? "restarted" : "left", audio ? "restarted" : "left");
  }

  // A staged package that was left costs one install.
  [[nodiscard]] std::string afterwards() const {
    const std::string installed = kInstalled + " newer newer newer newer";
    if (run_.staging != "package") return installed;
    return kNotStaged + " " + run_.parts + ", " + installed;
  }
};

class UninstallJudge : private Judge {
 public:
  using Judge::Judge;

  Words breaches() {
    expect("the reply", run_.reply, reply());
    Words parts;
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) parts.push_back(part(i));
    expect("the parts", run_.parts, joined(parts));
    expectOthers();
    expectOrder();
    if (!run_.afterwards.empty()) {
      expect("what comes afterwards", run_.afterwards,
             kRemoved + " - - - -, " + kInstalled + " newer newer newer newer");
    }
    return breaches_;
  }

 private:
  [[nodiscard]] static std::string removing(std::size_t i) {
    return (isBundle(i) ? "removeTree " : "remove ") + std::string(kMachineParts.at(i));
  }

  [[nodiscard]] std::string part(std::size_t i) const {
    if (!called(removing(i))) return answered() ? kAbsent : then_[i];
    if (!faultAt(removing(i))) return kAbsent;
    return happensHalfway(faultAt(removing(i))) && then_[i] != kAbsent ? "damaged" : then_[i];
  }

  // What is seen to be left decides, and nothing else.
  [[nodiscard]] std::string reply() const {
    if (!answered()) return "";
    const Words parts = split(run_.parts);
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) {
      if (parts[i] != kAbsent && !faultAt(std::string("exists ") + kMachineParts.at(i))) return kIncomplete;
    }
    return kRemoved;
  }

  void expectOthers() {
    const std::string lock = std::string("remove ") + kDaemonLock;
    for (const auto& [path, word] : run_.others) {
      if (!path.starts_with(kDatabase) && path != kRuntimeDirectory && path != kDaemonLock) expect(path, word, "whole");
    }
    expect(kDaemonLock, run_.others.at(kDaemonLock), done(lock) || (answered() && !called(lock)) ? kAbsent : "whole");
    for (const char* path : {kRuntimeDirectory, kDatabase}) {
      const bool owed = answered() && !called(std::string("removeTree ") + path);
      expect(path, run_.others.at(path), owed ? kAbsent : afterRemovalOf(path));
    }
  }

  // Each job ends before its files go, and the driver goes before the audio daemon looks again.
  void expectOrder() {
    for (const auto& [line, parts] : run_.partsAtTool) {
      if (line.find(" bootout gui/") != std::string::npos)
        expect("what " + line + " finds", parts, run_.road.partsThen);
    }
    if (answered()) expect("the broker's end", called(kBootout) ? "asked for" : "skipped", "asked for");
    if (answered()) expect("the audio daemon", called(kRestartAudio) ? "restarted" : "left", "restarted");
    if (called(kBootout)) {
      const Words parts = split(run_.partsAtTool.at(kBootout));
      expect("the broker when it is ended", parts[1] + " " + parts[2], then_[1] + " " + then_[2]);
    }
    if (called(kRestartAudio)) {
      expect("the driver when audio restarts", split(run_.partsAtTool.at(kRestartAudio))[0], part(0));
    }
  }
};

}  // namespace

std::vector<std::string> breachesOf(const FaultRun& run) {
  return run.road.request == Road::Request::install ? InstallJudge(run).breaches() : UninstallJudge(run).breaches();
}

std::string faultsInWords(const FaultRun& run) {
  std::string words;
  for (const auto& [number, fault] : run.faults) {
    words += (words.empty() ? "" : ", then ") + run.calls.at(number).line + " " + faultName(fault);
  }
  return words.empty() ? "no fault" : words;
}

}  // namespace halvo
