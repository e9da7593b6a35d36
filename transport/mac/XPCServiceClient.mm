#import "transport/mac/XPCServiceClient.h"

#include <utility>

#import "platform/mac/FoundationText.h"

namespace halvo {
namespace {

NSData* foundationData(const AuthorizationBlob& bytes) {
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

// The helper's methods as messages.
class XPCProxy final : public HalvoHelperProtocol {
 public:
  XPCProxy(std::shared_ptr<XPCLink> link, ServiceClient::FailureHandler onFailure)
      : link_(std::move(link)), onFailure_(std::move(onFailure)) {}

  void ping(const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote pingWithReply:message.textReply(reply)];
    }
  }

  void enumerateActiveGuiDomains(const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote enumerateActiveGuiDomainsWithReply:message.textReply(reply)];
    }
  }

  void prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote prepareForRemovalWithAcceptAudioInterruption:acceptAudioInterruption
                                                         withReply:message.textReply(reply)];
    }
  }

  void removeAppBundle(const std::string& path, const BoolReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote removeAppBundleWithPath:foundationText(path) withReply:message.boolReply(reply)];
    }
  }

  void finalizeRemoval() override {
    @autoreleasepool {
      [link_->newOneWayMessage(onFailure_).remote finalizeRemoval];
    }
  }

  void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote installSystemPkgWithPkgPath:foundationText(pkgPath)
                                     manifestJSON:foundationText(manifestJSON)
                          acceptAudioInterruption:acceptAudioInterruption
                                        withReply:message.textReply(reply)];
    }
  }

  void prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                         const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote prepareForRemovalWithAuthorization:foundationData(authorization)
                                 acceptAudioInterruption:acceptAudioInterruption
                                               withReply:message.textReply(reply)];
    }
  }

  void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                       const BoolReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote removeAppBundleWithAuthorization:foundationData(authorization)
                                                  path:foundationText(path)
                                             withReply:message.boolReply(reply)];
    }
  }

  void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote finalizeRemovalWithAuthorization:foundationData(authorization)
                                             withReply:message.boolReply(reply)];
    }
  }

  void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                        const std::string& manifestJSON, bool acceptAudioInterruption,
                        const TextReply& reply) override {
    @autoreleasepool {
      const OutgoingMessage message = link_->newMessage(onFailure_);
      [message.remote installSystemPkgWithAuthorization:foundationData(authorization)
                                                pkgPath:foundationText(pkgPath)
                                           manifestJSON:foundationText(manifestJSON)
                                acceptAudioInterruption:acceptAudioInterruption
                                              withReply:message.textReply(reply)];
    }
  }

 private:
  const std::shared_ptr<XPCLink> link_;
  const ServiceClient::FailureHandler onFailure_;
};

class XPCServiceClient final : public ServiceClient {
 public:
  explicit XPCServiceClient(XPCConnector connect) : link_(std::make_shared<XPCLink>(std::move(connect))) {}

  ~XPCServiceClient() override {
    @autoreleasepool {
      link_->close();
    }
  }

  std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler onFailure) override {
    return std::make_shared<XPCProxy>(link_, std::move(onFailure));
  }

 private:
  const std::shared_ptr<XPCLink> link_;
};

}  // namespace

std::unique_ptr<ServiceClient> serviceClientConnectingBy(XPCConnector connect) {
  return std::make_unique<XPCServiceClient>(std::move(connect));
}

std::unique_ptr<ServiceClient> ServiceClient::forMachService(const std::string& machServiceName) {
  return serviceClientConnectingBy([name = machServiceName] {
    return [[NSXPCConnection alloc] initWithMachServiceName:foundationText(name) options:NSXPCConnectionPrivileged];
  });
}

}  // namespace halvo
