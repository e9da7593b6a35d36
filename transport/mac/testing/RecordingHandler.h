// A handler that writes down what reaches it and answers as told.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"

namespace halvo {

class RecordingHandler final : public HalvoHelperProtocol {
 public:
  std::vector<std::string> calls;  // one line a call: "removeAppBundle authorization=2 path=/a"
  std::string textAnswer = "{}";
  bool boolAnswer = true;

  std::function<void()> onTextCall;  // runs when a call with a text reply has arrived, on its thread

  // Instead of answering with a text or a boolean: the replies are kept here, to be called later by the test.
  bool keepsTextReplies = false;
  bool keepsBoolReplies = false;
  std::vector<TextReply> textReplies;
  std::vector<BoolReply> boolReplies;

  void ping(const TextReply& reply) override { answer("ping", reply); }
  void enumerateActiveGuiDomains(const TextReply& reply) override { answer("enumerateActiveGuiDomains", reply); }
  void prepareForRemoval(bool accept, const TextReply& reply) override {
    answer("prepareForRemoval accept=" + std::to_string(accept), reply);
  }
  void removeAppBundle(const std::string& path, const BoolReply& reply) override {
    answer("removeAppBundle path=" + path, reply);
  }
  void finalizeRemoval() override { calls.emplace_back("finalizeRemoval"); }
  void installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON, bool accept,
                        const TextReply& reply) override {
    answer("installSystemPkg pkgPath=" + pkgPath + " manifest=" + manifestJSON + " accept=" + std::to_string(accept),
           reply);
  }
  void prepareForRemoval(const AuthorizationBlob& authorization, bool accept, const TextReply& reply) override {
    answer("prepareForRemoval" + blob(authorization) + " accept=" + std::to_string(accept), reply);
  }
  void removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                       const BoolReply& reply) override {
    answer("removeAppBundle" + blob(authorization) + " path=" + path, reply);
  }
  void finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) override {
    answer("finalizeRemoval" + blob(authorization), reply);
  }
  void installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                        const std::string& manifestJSON, bool accept, const TextReply& reply) override {
    answer("installSystemPkg" + blob(authorization) + " pkgPath=" + pkgPath + " manifest=" + manifestJSON +
               " accept=" + std::to_string(accept),
           reply);
  }

 private:
  static std::string blob(const AuthorizationBlob& authorization) {
    return " authorization=" + std::string(reinterpret_cast<const char*>(authorization.data()), authorization.size());
  }

  void answer(const std::string& call, const TextReply& reply) {
    calls.push_back(call);
    keepsTextReplies ? textReplies.push_back(reply) : reply(textAnswer);
    if (onTextCall) onTextCall();
  }

  void answer(const std::string& call, const BoolReply& reply) {
    calls.push_back(call);
    keepsBoolReplies ? boolReplies.push_back(reply) : reply(boolAnswer);
  }
};

}  // namespace halvo
