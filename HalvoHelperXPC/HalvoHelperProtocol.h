// The ten requests that the helper answers, as the helper implements them and as the application calls them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace halvo {

// The external form of an authorization reference, as it came from the client: of any length, not yet checked.
using AuthorizationBlob = std::vector<std::byte>;

using TextReply = std::function<void(const std::string& json)>;
using BoolReply = std::function<void(bool succeeded)>;

// Every reply is called exactly once. Texts are UTF-8. The first six methods are the first generation, which carries
// no authorization; a client uses the last four when the helper reports version 6 or above.
class HalvoHelperProtocol {
 public:
  HalvoHelperProtocol() = default;
  HalvoHelperProtocol(const HalvoHelperProtocol&) = delete;
  HalvoHelperProtocol& operator=(const HalvoHelperProtocol&) = delete;
  virtual ~HalvoHelperProtocol() = default;

  virtual void ping(const TextReply& reply) = 0;
  virtual void enumerateActiveGuiDomains(const TextReply& reply) = 0;
  virtual void prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) = 0;
  virtual void removeAppBundle(const std::string& path, const BoolReply& reply) = 0;
  // One way: the client gets no answer.
  virtual void finalizeRemoval() = 0;
  virtual void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON,
                                bool acceptAudioInterruption, const TextReply& reply) = 0;

  virtual void prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                                 const TextReply& reply) = 0;
  virtual void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                               const BoolReply& reply) = 0;
  virtual void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) = 0;
  virtual void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                                const std::string& manifestJSON, bool acceptAudioInterruption,
                                const TextReply& reply) = 0;
};

}  // namespace halvo
