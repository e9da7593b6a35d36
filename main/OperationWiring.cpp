#include "main/OperationWiring.h"

#include <utility>

#include "HalvoHelper/install/InstallSequence.h"
#include "HalvoHelper/service/HelperHandler.h"
#include "HalvoHelper/system/LoginUsers.h"
#include "main/InstalledDriver.h"
#include "main/TeamIdentifier.h"
#include "platform/SystemLog.h"

namespace halvo {

OperationWiring::OperationWiring(SystemAdapters adapters, std::shared_ptr<const AdminAuthorizer> authorizer,
                                 bool adminRightIsSound, std::shared_ptr<ActivityTracker> tracker,
                                 OperationLogPaths logPaths)
    : adapters_(std::move(adapters)),
      authorizer_(std::move(authorizer)),
      adminRightIsSound_(adminRightIsSound),
      tracker_(std::move(tracker)),
      logPaths_(std::move(logPaths)),
      installLog_(logPaths_.install) {}

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
  const InstallSequence sequence{
      .fs = adapters_.fs,
      .launchctl = adapters_.launchctl,
      .installer = adapters_.installer,
      .verifier = adapters_.verifier,
      .teamID = HALVO_TEAM_ID,
      .audio = adapters_.audio,
      .installedDriverVersion = halvoInstalledDriverVersion,
      .pkgPath = pkgPath,
      .manifestJSON = manifestJSON,
      .activeGuiUids = [this] { return enumerateDomains(); },
      .logPath = logPaths_.install,
      .log = [this](const std::string& line) { installLog_.write(line); },
  };
  return sequence.run(acceptAudioInterruption);
}

UninstallResult OperationWiring::runUninstall(bool /*acceptAudioInterruption*/) const {
  halvoSystemLog("halvo-helper: refused to uninstall: this helper cannot remove the product");
  return UninstallIncomplete{logPaths_.uninstall};
}

bool OperationWiring::removeAppBundle(const std::string& /*path*/) const {
  halvoSystemLog("halvo-helper: refused to remove the application: this helper cannot remove the product");
  return false;
}

void OperationWiring::finalizeRemoval() const {
  halvoSystemLog("halvo-helper: refused to remove itself: this helper cannot remove the product");
}

}  // namespace halvo
