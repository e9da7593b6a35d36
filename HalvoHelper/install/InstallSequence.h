// Installs the product's signed system package: stage, judge, gate, snapshot, install, and restart or roll back.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "HalvoHelper/install/InstallResult.h"
#include "HalvoHelper/install/Installer.h"
#include "HalvoHelper/security/PkgVerifier.h"
#include "HalvoHelper/system/AudioActivity.h"
#include "HalvoHelper/system/Launchctl.h"
#include "HalvoHelper/system/PrivilegedFS.h"
#include "HalvoHelper/system/ProductPaths.h"

namespace halvo {

// Whole seconds since 1970 by the wall clock.
[[nodiscard]] std::int64_t halvoUnixSeconds();

// Built for one request, run once. Two runs at the same time would share the staging directory: the caller excludes it.
struct InstallSequence {
  std::shared_ptr<const PrivilegedFS> fs;
  Launchctl launchctl;
  Installer installer;
  PkgVerifier verifier;
  std::string teamID;  // demanded of the package's signature
  AudioActivity audio;
  std::function<std::optional<std::string>()> installedDriverVersion;  // asked anew at each use
  std::string pkgPath;                                                 // as the client named it
  std::string manifestJSON;                                            // as the client sent it
  std::string rollbackRoot = kInstallRollbackRoot;
  std::string stagingRoot = kInstallStagingRoot;
  std::function<std::int64_t()> epoch = halvoUnixSeconds;  // names the snapshot
  std::function<std::vector<std::int64_t>()> activeGuiUids = [] { return std::vector<std::int64_t>(); };
  std::string logPath;  // reported back only
  std::function<void(const std::string& line)> log;

  // Blocks until every tool it starts has ended. Nothing of the staging directory is left afterwards, unless it could
  // not even be made.
  InstallResult run(bool acceptAudioInterruption) const;

 private:
  InstallResult runStaged(bool acceptAudioInterruption) const;
  std::optional<InstallResult> refuseUntrusted() const;
  std::optional<InstallResult> refuseDowngrade() const;
  std::string takeSnapshot() const;
  InstallResult rollBack(const std::string& snapshotDir) const;
  InstallResult restartServices() const;
  void pruneStaleSnapshots() const;
  void restoreSnapshot(const std::string& snapshotDir) const;
  void restartBrokerInline() const;
  std::string stagedPath() const;
};

}  // namespace halvo
