// A handler for contract tests: writes down what reaches it and answers as told. Any thread.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo {

class ScriptedHandler final : public HalvoHelperProtocol {
 public:
  // Answers instead of the usual echo. Set before the first message.
  std::function<void(const TextReply&)> onPing;

  // One line a call, in order: "removeAppBundle authorization=2 path=/a", data as the number of its bytes.
  [[nodiscard]] std::vector<std::string> calls() const;
  // The data of the last call that had any.
  [[nodiscard]] AuthorizationBlob lastAuthorization() const;

  // Texts are answered with the line of the call, a manifest with itself; booleans with whether the path is not empty.
  void ping(const TextReply& reply) override;
  void enumerateActiveGuiDomains(const TextReply& reply) override;
  void prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) override;
  void removeAppBundle(const std::string& path, const BoolReply& reply) override;
  void finalizeRemoval() override;
  void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override;
  void prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                         const TextReply& reply) override;
  void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                       const BoolReply& reply) override;
  void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) override;
  void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                        const std::string& manifestJSON, bool acceptAudioInterruption, const TextReply& reply) override;

 private:
  std::string note(const std::string& call);
  std::string note(const std::string& call, const AuthorizationBlob& authorization, const std::string& rest);

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;       // guarded by mutex_
  AuthorizationBlob lastAuthorization_;  // guarded by mutex_
};

}  // namespace halvo
