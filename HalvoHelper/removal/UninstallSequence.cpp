#include "HalvoHelper/removal/UninstallSequence.h"

#include <array>

#include "HalvoHelper/system/Pkgutil.h"
#include "HalvoHelper/system/ProductPaths.h"

namespace halvo {
namespace {

constexpr const char* kRuntimeDir = "/private/var/run/halvo";
constexpr const char* kLockFile = "/private/var/tmp/halvo-daemon.lock";
constexpr const char* kDatabaseDir = "/var/db/halvo";

}  // namespace

UninstallResult UninstallSequence::run(bool acceptAudioInterruption) const {
  if (!acceptAudioInterruption && audio.anyDeviceRunning()) return UninstallAudioActive{};
  removeAgents();
  removeDriver();
  removeBroker();
  removeRecords();
  return judgeLeftovers();
}

void UninstallSequence::removeAgents() const {
  // Booted out first: launchd would not know the job any more once its property list is gone.
  for (const std::int64_t uid : activeGuiUids()) launchctl.bootoutGui(uid, kDaemonLabel);
  fs->remove(kDaemonPlistPath);
}

void UninstallSequence::removeDriver() const {
  // The audio daemon lets go of a driver only when it starts again and no longer finds it.
  fs->removeTree(kDriverBundlePath);
  log("coreaudiod restart rc=" + std::to_string(launchctl.restartCoreaudiod()));
}

void UninstallSequence::removeBroker() const {
  launchctl.bootoutSystem(kBrokerLabel);
  fs->remove(kBrokerPlistPath);
  fs->remove(kBrokerPath);
}

void UninstallSequence::removeRecords() const {
  fs->removeTree(kRuntimeDir);
  Pkgutil(runner).forget(kPackageIdentifier);
  fs->remove(kLockFile);
  fs->removeTree(kDatabaseDir);
}

UninstallResult UninstallSequence::judgeLeftovers() const {
  std::string leftover;
  for (const std::string path : {kDaemonPlistPath, kDriverBundlePath, kBrokerPlistPath, kBrokerPath}) {
    if (fs->exists(path)) leftover += (leftover.empty() ? "" : ", ") + path;
  }
  if (leftover.empty()) return UninstallOk{guiAppPath};
  log("uninstall incomplete; leftover: " + leftover);
  return UninstallIncomplete{logPath};
}

}  // namespace halvo
