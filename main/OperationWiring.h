// Turns the process-wide adapters into the operations that a connection's handler runs.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/install/InstallResult.h"
#include "HalvoHelper/install/Installer.h"
#include "HalvoHelper/removal/UninstallResult.h"
#include "HalvoHelper/security/AdminAuthorizer.h"
#include "HalvoHelper/security/PkgVerifier.h"
#include "HalvoHelper/service/ActivityTracker.h"
#include "HalvoHelper/system/AudioActivity.h"
#include "HalvoHelper/system/IdleSleep.h"
#include "HalvoHelper/system/Launchctl.h"
#include "HalvoHelper/system/PrivilegedFS.h"
#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "main/InstalledDriver.h"
#include "main/MainQueue.h"
#include "main/OperationLog.h"
#include "platform/ServiceRegistration.h"

namespace halvo {

// What the helper does, beside booting its job out, when it takes itself away: wait, withdraw its registration, exit.
struct HelperEnding {
  std::function<void(std::chrono::nanoseconds, std::function<void()>)> runAfter = halvoRunOnMainQueueAfter;
  std::function<std::optional<std::string>(std::string_view)> unregister = halvoUnregisterDaemon;
  std::function<void()> exit = halvoEndProcess;
};

// The adapters that every operation is built from; made once, shared by all.
struct SystemAdapters {
  std::shared_ptr<const ProcessRunner> runner;
  Launchctl launchctl;
  std::shared_ptr<const PrivilegedFS> fs;
  AudioActivity audio;
  Installer installer;
  PkgVerifier verifier;
  std::shared_ptr<const IdleSleep> sleep;
  HelperEnding ending = {};
};

// Where the progress of operations is written, which the clients are told, and where the installed version stands.
struct OperationFiles {
  std::string installLog = kInstallLogPath;
  std::string uninstallLog = kUninstallLogPath;
  std::string driverPlist = kInstalledDriverPlist;
};

// Each operation builds a sequence for one call and drops it. Called from several connections' threads at once.
class OperationWiring : public std::enable_shared_from_this<OperationWiring> {
 public:
  // While `adminRightIsSound` is false every authorization is refused without asking `authorizer`: a right whose
  // definition is not ours proves nothing.
  OperationWiring(SystemAdapters adapters, std::shared_ptr<const AdminAuthorizer> authorizer, bool adminRightIsSound,
                  std::shared_ptr<ActivityTracker> tracker, OperationFiles files = {});

  // A handler for one connection. It shares the ownership of this wiring.
  std::shared_ptr<HalvoHelperProtocol> makeHandler() const;

  std::vector<std::int64_t> enumerateDomains() const;
  bool authorizeAdmin(const AuthorizationBlob& externalForm) const;

  // These change the machine and exclude each other: a second one waits until the first is done. Otherwise the clean-up
  // of a refused install would remove the staged package of a trusted one, and a third request could put an unverified
  // package under the name that is about to be installed. Meanwhile the Mac does not fall asleep because nobody uses
  // it: the system would freeze the change halfway, for as long as it sleeps.
  InstallResult runInstall(const std::string& pkgPath, const std::string& manifestJSON,
                           bool acceptAudioInterruption) const;
  UninstallResult runUninstall(bool acceptAudioInterruption) const;
  bool removeAppBundle(const std::string& path) const;

  // Returns at once. After 0.3 seconds, and once no operation runs any more, the main queue takes the helper out of
  // launchd and ends the process.
  void finalizeRemoval() const;

 private:
  void removeHelper() const;

  const SystemAdapters adapters_;
  const std::shared_ptr<const AdminAuthorizer> authorizer_;
  const bool adminRightIsSound_;
  const std::shared_ptr<ActivityTracker> tracker_;
  const OperationFiles files_;
  const OperationLog installLog_;
  const OperationLog uninstallLog_;
  mutable std::mutex operation_;  // held for the whole of an operation that changes the machine
};

}  // namespace halvo
