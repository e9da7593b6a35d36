// A helper for tests of the program: notes each request as one line and answers from a script.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelperXPC/HalvoHelperProtocol.h"
#include "transport/ServiceClient.h"

namespace halvo {

class ScriptedHelper final : public HalvoHelperProtocol {
 public:
  void ping(const TextReply& reply) override {
    note("ping");
    if (pingsAreAnswered) give(pingFailure, [this, reply] { reply(pingReply); });
  }
  void enumerateActiveGuiDomains(const TextReply& reply) override { take("users", reply); }
  void prepareForRemoval(bool accept, const TextReply& reply) override {
    take("legacy prepareForRemoval " + flag(accept), reply);
  }
  void removeAppBundle(const std::string& path, const BoolReply& reply) override {
    take("legacy removeAppBundle " + path, reply);
  }
  void finalizeRemoval() override { note("legacy finalizeRemoval"); }
  void installSystemPkg(const std::string& path, const std::string& manifest, bool accept,
                        const TextReply& reply) override {
    take("legacy install " + path + " " + manifest + " " + flag(accept), reply);
  }
  void prepareForRemoval(const AuthorizationBlob& form, bool accept, const TextReply& reply) override {
    take("prepareForRemoval " + size(form) + " " + flag(accept), reply);
  }
  void removeAppBundle(const AuthorizationBlob& form, const std::string& path, const BoolReply& reply) override {
    take("removeAppBundle " + size(form) + " " + path, reply);
  }
  void finalizeRemoval(const AuthorizationBlob& form, const BoolReply& reply) override {
    const bool last = finalReply.value_or(boolReply);
    takeWith("finalizeRemoval " + size(form), [last, reply] { reply(last); });
  }
  void installSystemPkg(const AuthorizationBlob& form, const std::string& path, const std::string& manifest,
                        bool accept, const TextReply& reply) override {
    take("install " + size(form) + " " + path + " " + manifest + " " + flag(accept), reply);
  }

  std::string pingReply = R"({"ok":true,"helper_version":6,"build_abi":1})";
  std::string textReply = R"({"code":"ok","changed":[]})";
  bool boolReply = true;
  std::optional<ServiceFailure> pingFailure;
  std::optional<ServiceFailure> requestFailure;  // of everything but ping
  std::optional<bool> finalReply;                // where finalizeRemoval is answered otherwise
  bool pingsAreAnswered = true;
  bool answersAtOnce = true;  // what is no ping; else when the test calls answer()

  std::vector<std::string> requests;
  std::function<void()> duringRequest = [] {};  // of everything but ping
  std::function<void()> answer;
  ServiceClient::FailureHandler fail;

 private:
  void note(const std::string& request) { requests.push_back(request); }

  void give(const std::optional<ServiceFailure>& failure, const std::function<void()>& reply) const {
    failure ? fail(*failure) : reply();
  }

  void take(const std::string& request, const TextReply& reply) {
    takeWith(request, [this, reply] { reply(textReply); });
  }
  void take(const std::string& request, const BoolReply& reply) {
    takeWith(request, [this, reply] { reply(boolReply); });
  }
  void takeWith(const std::string& request, const std::function<void()>& reply) {
    note(request);
    duringRequest();
    answer = [this, reply] { give(requestFailure, reply); };
    if (answersAtOnce) answer();
  }

  static std::string flag(bool value) { return value ? "true" : "false"; }
  static std::string size(const AuthorizationBlob& form) { return std::to_string(form.size()) + " bytes"; }
};

class ScriptedClient final : public ServiceClient {
 public:
  explicit ScriptedClient(std::shared_ptr<ScriptedHelper> helper) : helper_(std::move(helper)) {}
  std::shared_ptr<HalvoHelperProtocol> proxy(FailureHandler onFailure) override {
    helper_->fail = std::move(onFailure);
    return helper_;
  }

 private:
  std::shared_ptr<ScriptedHelper> helper_;
};

}  // namespace halvo
