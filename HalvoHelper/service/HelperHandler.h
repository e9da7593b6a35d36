// Answers the ten requests of one admitted connection. Does nothing privileged itself: it counts the call, asks for
// authorization, runs the operation it was given and turns the result into the reply.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/install/InstallResult.h"
#include "HalvoHelper/removal/UninstallResult.h"
#include "HalvoHelper/service/ActivityTracker.h"
#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo {

// What a handler is made of. Every operation may be called from several connections' threads at once.
struct HelperOperations {
  std::int64_t buildABI = 1;  // reported by ping
  std::function<std::vector<std::int64_t>()> enumerate;
  std::function<UninstallResult(bool acceptAudioInterruption)> uninstall;
  std::function<bool(const std::string& path)> removeBundle;
  std::function<void()> finalize;  // must return at once; the process ends some time later
  std::function<InstallResult(const std::string& pkgPath, const std::string& manifestJSON,
                              bool acceptAudioInterruption)>
      install;
  std::function<bool(const AuthorizationBlob& externalForm)> authorize;
  std::shared_ptr<ActivityTracker> activity;  // may be empty: then calls are not counted
};

// {"ok":true,"helper_version":6,"build_abi":1}
[[nodiscard]] std::string halvoPingReplyJSON(std::int64_t buildABI);

// Every reply is given on the calling thread before the method returns. A long operation holds that thread.
class HelperHandler final : public HalvoHelperProtocol {
 public:
  explicit HelperHandler(HelperOperations operations);

  void ping(const TextReply& reply) override;
  void enumerateActiveGuiDomains(const TextReply& reply) override;

  // The first generation: answered, so that an old client gets a definite refusal, and never acted upon.
  void prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) override;
  void removeAppBundle(const std::string& path, const BoolReply& reply) override;
  void finalizeRemoval() override;
  void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override;

  void prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                         const TextReply& reply) override;
  void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                       const BoolReply& reply) override;
  // Replies before it acts: the client must have its answer before the process is gone.
  void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) override;
  void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                        const std::string& manifestJSON, bool acceptAudioInterruption, const TextReply& reply) override;

 private:
  const HelperOperations operations_;
};

}  // namespace halvo
