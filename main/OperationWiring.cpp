#include "main/OperationWiring.h"

#include <utility>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/removal/AppBundleRemoval.h"
#include "HalvoHelper/removal/FinalRemoval.h"
#include "HalvoHelper/removal/UninstallSequence.h"
#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelper/system/LoginUsers.h"
#include "main/TeamIdentifier.h"
#include "platform/SystemLog.h"

namespace halvo {
namespace {

// Long enough for the answer to reach the client before the connection ends with the process.
constexpr std::chrono::milliseconds kFinalRemovalDelay(300);

}  // namespace

OperationWiring::OperationWiring(SystemAdapters adapters, std::shared_ptr<const AdminAuthorizer> authorizer,
                                 bool adminRightIsSound, std::shared_ptr<ActivityTracker> tracker, OperationFiles files)
    : adapters_(std::move(adapters)),
      authorizer_(std::move(authorizer)),
      adminRightIsSound_(adminRightIsSound),
      tracker_(std::move(tracker)),
      files_(std::move(files)),
      installLog_(files_.installLog),
      uninstallLog_(files_.uninstallLog) {}

std::shared_ptr<HalvoHelperProtocol> OperationWiring::makeHandler() const {
  const auto self = shared_from_this();
  return std::make_shared<HelperHandler>(HelperOperations{
      .buildABI = 1,
      .enumerate = [self] { return self->enumerateDomains(); },
      .uninstall = [self](bool acceptAudio) { return self->runUninstall(acceptAudio); },
      .removeBundle = [self](const std::string& path) { return self->removeAppBundle(path); },
      .finalize = [self] { self->finalizeRemoval(); },
      .install = [self](const std::string& pkgPath, const std::string& manifestJSON,
                        bool acceptAudio) { return self->runInstall(pkgPath, manifestJSON, acceptAudio); },
      .authorize = [self](const AuthorizationBlob& externalForm) { return self->authorizeAdmin(externalForm); },
      .activity = tracker_,
  });
}

std::vector<std::int64_t> OperationWiring::enumerateDomains() const {
  return halvoEnumerateActiveGuiDomains(adapters_.launchctl, *adapters_.runner);
}

bool OperationWiring::authorizeAdmin(const AuthorizationBlob& externalForm) const {
  return adminRightIsSound_ && authorizer_->isAuthorized(externalForm);
}

InstallResult OperationWiring::runInstall(const std::string& pkgPath, const std::string& manifestJSON,
                                          bool acceptAudioInterruption) const {
  const std::scoped_lock oneAtATime(operation_);
  const IdleSleepPrevention awake(*adapters_.sleep);
  const InstallSequence sequence{
      .fs = adapters_.fs,
      .launchctl = adapters_.launchctl,
      .installer = adapters_.installer,
      .verifier = adapters_.verifier,
      .teamID = HALVO_TEAM_ID,
      .audio = adapters_.audio,
      .installedDriverVersion = [this] { return halvoInstalledDriverVersion(files_.driverPlist); },
      .pkgPath = pkgPath,
      .manifestJSON = manifestJSON,
      .activeGuiUids = [this] { return enumerateDomains(); },
      .logPath = files_.installLog,
      .log = [this](const std::string& line) { installLog_.write(line); },
  };
  return sequence.run(acceptAudioInterruption);
}

UninstallResult OperationWiring::runUninstall(bool acceptAudioInterruption) const {
  const std::scoped_lock oneAtATime(operation_);
  const IdleSleepPrevention awake(*adapters_.sleep);
  const UninstallSequence sequence{
      .fs = adapters_.fs,
      .launchctl = adapters_.launchctl,
      .runner = adapters_.runner,
      .audio = adapters_.audio,
      .activeGuiUids = [this] { return enumerateDomains(); },
      .guiAppPath = kApplicationPath,
      .logPath = files_.uninstallLog,
      .log = [this](const std::string& line) { uninstallLog_.write(line); },
  };
  return sequence.run(acceptAudioInterruption);
}

bool OperationWiring::removeAppBundle(const std::string& path) const {
  const std::scoped_lock oneAtATime(operation_);
  const IdleSleepPrevention awake(*adapters_.sleep);
  return halvoRemoveAppBundle(path, *adapters_.fs, halvoCanonicalPath, halvoSystemLog);
}

void OperationWiring::finalizeRemoval() const {
  adapters_.ending.runAfter(kFinalRemovalDelay, [self = shared_from_this()] { self->removeHelper(); });
}

void OperationWiring::removeHelper() const {
  // Waits for an operation that is still running, and keeps the lock: nothing may begin that would be cut off.
  const std::scoped_lock oneAtATime(operation_);
  const IdleSleepPrevention awake(*adapters_.sleep);
  halvoFinalizeRemoval([this] { return adapters_.ending.unregister(kHelperPlistName); }, adapters_.launchctl,
                       halvoSystemLog, adapters_.ending.exit);
}

}  // namespace halvo
