#include "HalvoHelper/service/HelperHandler.h"

#include <utility>

#include "HalvoHelper/system/LoginUsers.h"
#include "HalvoHelperXPC/Constants.h"

namespace halvo {
namespace {

std::string unauthorizedReply() { return std::string(kHalvoUnauthorizedReplyJSON); }

}  // namespace

std::string halvoPingReplyJSON(std::int64_t buildABI) {
  return "{\"ok\":true,\"helper_version\":" + std::to_string(kHalvoHelperXPCVersion) +
         ",\"build_abi\":" + std::to_string(buildABI) + "}";
}

HelperHandler::HelperHandler(HelperOperations operations) : operations_(std::move(operations)) {}

void HelperHandler::ping(const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(halvoPingReplyJSON(operations_.buildABI));
}

void HelperHandler::enumerateActiveGuiDomains(const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(halvoGuiDomainsJSON(operations_.enumerate()));
}

void HelperHandler::prepareForRemoval(bool /*acceptAudioInterruption*/, const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(unauthorizedReply());
}

void HelperHandler::removeAppBundle(const std::string& /*path*/, const BoolReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(false);
}

void HelperHandler::finalizeRemoval() {}

void HelperHandler::installSystemPkg(const std::string& /*pkgPath*/, const std::string& /*manifestJSON*/,
                                     bool /*acceptAudioInterruption*/, const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(unauthorizedReply());
}

void HelperHandler::prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                                      const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  if (!operations_.authorize(authorization)) return reply(unauthorizedReply());
  reply(halvoUninstallResultJSON(operations_.uninstall(acceptAudioInterruption)));
}

void HelperHandler::removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                                    const BoolReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  reply(operations_.authorize(authorization) && operations_.removeBundle(path));
}

void HelperHandler::finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  if (!operations_.authorize(authorization)) return reply(false);
  reply(true);
  operations_.finalize();
}

void HelperHandler::installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                                     const std::string& manifestJSON, bool acceptAudioInterruption,
                                     const TextReply& reply) {
  const ActivityScope inFlight(operations_.activity);
  if (!operations_.authorize(authorization)) return reply(unauthorizedReply());
  reply(halvoInstallResultJSON(operations_.install(pkgPath, manifestJSON, acceptAudioInterruption)));
}

}  // namespace halvo
