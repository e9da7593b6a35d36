#include <utility>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "sim/transport/ClientLink.h"
#include "transport/ServiceClient.h"

namespace halvo {
namespace {

using sim::ClientLink;
using sim::MessageArguments;

// The helper's methods as messages.
class BusProxy final : public HalvoHelperProtocol {
 public:
  BusProxy(std::shared_ptr<ClientLink> link, ServiceClient::FailureHandler onFailure)
      : link_(std::move(link)), onFailure_(std::move(onFailure)) {}

  void ping(const TextReply& reply) override { send(MessageId::ping, {}, reply, {}); }

  void enumerateActiveGuiDomains(const TextReply& reply) override {
    send(MessageId::enumerateActiveGuiDomains, {}, reply, {});
  }

  void prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) override {
    send(MessageId::prepareForRemovalUnauthorized, {.acceptAudioInterruption = acceptAudioInterruption}, reply, {});
  }

  void removeAppBundle(const std::string& path, const BoolReply& reply) override {
    send(MessageId::removeAppBundleUnauthorized, {.texts = {path}}, {}, reply);
  }

  void finalizeRemoval() override { send(MessageId::finalizeRemovalUnauthorized, {}, {}, {}); }

  void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override {
    send(MessageId::installSystemPkgUnauthorized,
         {.texts = {pkgPath, manifestJSON}, .acceptAudioInterruption = acceptAudioInterruption}, reply, {});
  }

  void prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                         const TextReply& reply) override {
    send(MessageId::prepareForRemoval,
         {.authorization = authorization, .acceptAudioInterruption = acceptAudioInterruption}, reply, {});
  }

  void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                       const BoolReply& reply) override {
    send(MessageId::removeAppBundle, {.authorization = authorization, .texts = {path}}, {}, reply);
  }

  void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) override {
    send(MessageId::finalizeRemoval, {.authorization = authorization}, {}, reply);
  }

  void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                        const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override {
    send(MessageId::installSystemPkg,
         {.authorization = authorization,
          .texts = {pkgPath, manifestJSON},
          .acceptAudioInterruption = acceptAudioInterruption},
         reply, {});
  }

 private:
  void send(MessageId id, MessageArguments arguments, const TextReply& text, const BoolReply& boolean) {
    link_->send({id, std::move(arguments), text, boolean, onFailure_});
  }

  const std::shared_ptr<ClientLink> link_;
  const ServiceClient::FailureHandler onFailure_;
};

class BusServiceClient final : public ServiceClient {
 public:
  explicit BusServiceClient(const std::string& machServiceName) : link_(std::make_shared<ClientLink>(machServiceName)) {
    link_->start();
  }

  ~BusServiceClient() override { link_->close(); }

  std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler onFailure) override {
    return std::make_shared<BusProxy>(link_, std::move(onFailure));
  }

 private:
  const std::shared_ptr<ClientLink> link_;
};

}  // namespace

std::unique_ptr<ServiceClient> ServiceClient::forMachService(const std::string& machServiceName) {
  return std::make_unique<BusServiceClient>(machServiceName);
}

}  // namespace halvo
