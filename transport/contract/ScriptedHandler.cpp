#include "transport/contract/ScriptedHandler.h"

namespace halvo {
namespace {

std::string accepting(bool acceptAudioInterruption) {
  return acceptAudioInterruption ? " acceptAudioInterruption=true" : " acceptAudioInterruption=false";
}

std::string package(const std::string& pkgPath, const std::string& manifestJSON) {
  return " pkgPath=" + pkgPath + " manifestJSON=" + std::to_string(manifestJSON.size());
}

}  // namespace

std::vector<std::string> ScriptedHandler::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

AuthorizationBlob ScriptedHandler::lastAuthorization() const {
  const std::lock_guard lock(mutex_);
  return lastAuthorization_;
}

std::string ScriptedHandler::note(const std::string& call) {
  const std::lock_guard lock(mutex_);
  calls_.push_back(call);
  return call;
}

std::string ScriptedHandler::note(const std::string& call, const AuthorizationBlob& authorization,
                                  const std::string& rest) {
  const std::string line = note(call + " authorization=" + std::to_string(authorization.size()) + rest);
  const std::lock_guard lock(mutex_);
  lastAuthorization_ = authorization;
  return line;
}

void ScriptedHandler::ping(const TextReply& reply) {
  const std::string line = note("ping");
  if (onPing) return onPing(reply);
  reply(line);
}

void ScriptedHandler::enumerateActiveGuiDomains(const TextReply& reply) { reply(note("enumerateActiveGuiDomains")); }

void ScriptedHandler::prepareForRemoval(bool acceptAudioInterruption, const TextReply& reply) {
  reply(note("prepareForRemoval" + accepting(acceptAudioInterruption)));
}

void ScriptedHandler::removeAppBundle(const std::string& path, const BoolReply& reply) {
  note("removeAppBundle path=" + path);
  reply(!path.empty());
}

void ScriptedHandler::finalizeRemoval() { note("finalizeRemoval"); }

void ScriptedHandler::installSystemPkg(const std::string& pkgPath, const std::string& manifestJSON,
                                       bool acceptAudioInterruption, const TextReply& reply) {
  note("installSystemPkg" + package(pkgPath, manifestJSON) + accepting(acceptAudioInterruption));
  reply(manifestJSON);
}

void ScriptedHandler::prepareForRemoval(const AuthorizationBlob& authorization, bool acceptAudioInterruption,
                                        const TextReply& reply) {
  reply(note("prepareForRemoval", authorization, accepting(acceptAudioInterruption)));
}

void ScriptedHandler::removeAppBundle(const AuthorizationBlob& authorization, const std::string& path,
                                      const BoolReply& reply) {
  note("removeAppBundle", authorization, " path=" + path);
  reply(!path.empty());
}

void ScriptedHandler::finalizeRemoval(const AuthorizationBlob& authorization, const BoolReply& reply) {
  note("finalizeRemoval", authorization, "");
  reply(true);
}

void ScriptedHandler::installSystemPkg(const AuthorizationBlob& authorization, const std::string& pkgPath,
                                       const std::string& manifestJSON, bool acceptAudioInterruption,
                                       const TextReply& reply) {
  note("installSystemPkg", authorization, package(pkgPath, manifestJSON) + accepting(acceptAudioInterruption));
  reply(manifestJSON);
}

}  // namespace halvo
