#include "HalvoHelper/install/InstallSequence.h"

#include <chrono>

#include "HalvoHelper/install/Versions.h"
#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/text/Overloaded.h"

namespace halvo {
namespace {

constexpr int kStagingMode = 0700;
constexpr std::int64_t kSnapshotDays = 7;

std::string savedItem(const std::string& snapshotDir, const std::string& systemPath) {
  return snapshotDir + "/" + halvoLastPathComponent(systemPath);
}

// Removes the staging root, whatever happens in between: an unverified package must not lie there for a later run.
class StagingCleanup {
 public:
  StagingCleanup(const PrivilegedFS& fs, const std::string& root) : fs_(fs), root_(root) {}
  StagingCleanup(const StagingCleanup&) = delete;
  StagingCleanup& operator=(const StagingCleanup&) = delete;
  ~StagingCleanup() { fs_.removeTree(root_); }

 private:
  const PrivilegedFS& fs_;
  const std::string& root_;
};

}  // namespace

std::int64_t halvoUnixSeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

InstallResult InstallSequence::run(bool acceptAudioInterruption) const {
  if (!fs->makePrivateDir(stagingRoot, kStagingMode)) {
    log("REFUSED: could not create staging dir " + stagingRoot);
    return InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed};
  }
  const StagingCleanup cleanup(*fs, stagingRoot);
  return runStaged(acceptAudioInterruption);
}

InstallResult InstallSequence::runStaged(bool acceptAudioInterruption) const {
  if (!fs->stageFile(pkgPath, stagedPath())) {
    log("REFUSED: could not stage " + pkgPath + " -> " + stagedPath());
    return InstallUntrustedPackage{HalvoPkgDistrust::stagingFailed};
  }
  // From here on only the staged copy counts: what is swapped in at the client's path now changes nothing.
  if (auto refused = refuseUntrusted()) return *refused;
  if (!acceptAudioInterruption && audio.anyDeviceRunning()) return InstallAudioActive{};
  if (auto refused = refuseDowngrade()) return *refused;

  pruneStaleSnapshots();
  const std::string snapshotDir = takeSnapshot();
  return installer.installPkg(stagedPath()) == 0 ? restartServices() : rollBack(snapshotDir);
}

std::optional<InstallResult> InstallSequence::refuseUntrusted() const {
  return std::visit(
      Overloaded{
          [&](const Trusted& package) -> std::optional<InstallResult> {
            log("package trusted: " + package.leafCommonName);
            return std::nullopt;
          },
          [&](const Distrusted& package) -> std::optional<InstallResult> {
            log("REFUSED untrusted package (" + std::string(halvoRawValue(package.reason)) + "): " + package.detail);
            return InstallUntrustedPackage{package.reason};
          },
      },
      verifier.verify(stagedPath(), teamID));
}

std::optional<InstallResult> InstallSequence::refuseDowngrade() const {
  const std::string incoming = halvoParseManifestDriverVersion(manifestJSON).value_or("0");
  if (halvoDowngradeDecision(installedDriverVersion(), incoming) != DowngradeDecision::refuse) return std::nullopt;
  log("refusing downgrade: installed=" + installedDriverVersion().value_or("?") + " incoming=" + incoming);
  return InstallDowngrade{.installed = installedDriverVersion().value_or(""), .incoming = incoming};
}

std::string InstallSequence::takeSnapshot() const {
  std::string snapshotDir = rollbackRoot + "/" + std::to_string(epoch());
  fs->makeDir(snapshotDir);
  // A copy that fails does not stop the install: an update must not depend on a full disk's last megabytes.
  for (const std::string path : kInstalledParts) {
    if (fs->exists(path)) fs->copyTree(path, savedItem(snapshotDir, path));
  }
  return snapshotDir;
}

InstallResult InstallSequence::rollBack(const std::string& snapshotDir) const {
  log("installer failed; rolling back from " + snapshotDir);
  restoreSnapshot(snapshotDir);
  restartBrokerInline();
  return InstallRolledBack{logPath};
}

InstallResult InstallSequence::restartServices() const {
  restartBrokerInline();
  log("coreaudiod restart rc=" + std::to_string(launchctl.restartCoreaudiod()));
  for (const std::int64_t uid : activeGuiUids()) {
    const std::int32_t rc = launchctl.bootstrapGui(uid, kDaemonPlistPath);
    log("daemon bootstrap gui/" + std::to_string(uid) + " rc=" + std::to_string(rc));
  }
  return InstallOk{{"driver", "broker", "daemon_agent"}};
}

void InstallSequence::pruneStaleSnapshots() const {
  for (const std::string& name : fs->entries(rollbackRoot)) {
    const std::string path = rollbackRoot + "/" + name;
    const auto days = fs->modifiedDaysAgo(path);
    if (days && *days > kSnapshotDays) fs->removeTree(path);
  }
}

void InstallSequence::restoreSnapshot(const std::string& snapshotDir) const {
  // What was not there before the install has no saved item, and what the failed installer left of it stays.
  for (const std::string path : kInstalledParts) {
    const std::string saved = savedItem(snapshotDir, path);
    if (fs->exists(saved)) fs->copyTree(saved, path);
  }
}

void InstallSequence::restartBrokerInline() const {
  launchctl.bootoutSystem(kBrokerLabel);
  launchctl.bootstrapSystem(kBrokerPlistPath);
}

std::string InstallSequence::stagedPath() const { return stagingRoot + "/incoming.pkg"; }

}  // namespace halvo
