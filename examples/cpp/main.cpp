// The smallest application of the helper, in portable C++: what is asked in which order, what a reply means, and what a
// person is told.
#include <HalvoHelperXPC/Constants.h>
#include <HalvoHelperXPC/HalvoHelperProtocol.h>
#include <HalvoHelperXPC/ReplyParsers.h>
#include <Security/Security.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "examples/Replies.h"
#include "transport/ServiceClient.h"

namespace {

using example::codeOf, example::meaningOf, example::member;
using halvo::AuthorizationBlob, halvo::HalvoHelperProtocol, halvo::ServiceClient, halvo::TextReply;

void tell(std::string_view sentence) { std::cout << sentence << '\n' << std::flush; }

// Sends one request and waits for its reply, without a limit: whoever stops waiting for an install stops nothing.
// Nothing when the connection ended first.
template <typename Reply, typename Request>
std::optional<Reply> ask(ServiceClient& service, const Request& request) {
  const auto answer = std::make_shared<std::promise<std::optional<Reply>>>();
  const auto helper = service.proxy([answer](const halvo::ServiceFailure&) { answer->set_value(std::nullopt); });
  request(*helper, [answer](const Reply& reply) { answer->set_value(reply); });
  return answer->get_future().get();
}

// Whether a helper is there that takes this program for the application, and is not too old for it.
bool helperServes(ServiceClient& service) {
  const auto ping = [](HalvoHelperProtocol& helper, const TextReply& reply) { helper.ping(reply); };
  auto reply = ask<std::string>(service, ping);
  // An idle helper exits, and what meets the exit is cut off. A request that changes nothing is made once more.
  if (!reply) reply = ask<std::string>(service, ping);
  if (!reply) {
    tell("The helper cannot be reached. Allow it in System Settings, Login Items, and try again.");
    return false;
  }
  const auto version = halvo::halvoParseHelperVersion(reply);
  if (!halvo::halvoHelperSupportsAuthorization(version)) {
    tell("The installed helper is too old. Open the newest version of Halvo once, and try again.");
    return false;
  }
  tell("The helper answers, version " + std::to_string(*version) + ".");
  return true;
}

struct AuthorizationFreer {
  void operator()(AuthorizationRef reference) const { AuthorizationFree(reference, kAuthorizationFlagDefaults); }
};
// The helper can check the external form of an authorization for as long as this lives.
using Authorization = std::unique_ptr<const AuthorizationOpaqueRef, AuthorizationFreer>;

Authorization newAuthorization() {
  AuthorizationRef created = nullptr;
  const OSStatus status =
      AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &created);
  return Authorization(status == errAuthorizationSuccess ? created : nullptr);
}

// Shows the system's prompt and waits for its answer: whether an administrator approved.
bool obtainRight(const Authorization& authorization) {
  const std::string right(halvo::kHalvoAdminRight);
  AuthorizationItem item = {right.c_str(), 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  constexpr AuthorizationFlags kFlags =
      kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed | kAuthorizationFlagPreAuthorize;
  return AuthorizationCopyRights(authorization.get(), &rights, kAuthorizationEmptyEnvironment, kFlags, nullptr) ==
         errAuthorizationSuccess;
}

// What the helper checks; empty, and said why, when there is no approval.
AuthorizationBlob approvalThrough(const Authorization& authorization) {
  AuthorizationExternalForm form = {};
  if (!authorization || !obtainRight(authorization) ||
      AuthorizationMakeExternalForm(authorization.get(), &form) != errAuthorizationSuccess) {
    tell("An administrator has to approve this, and none did. Nothing was changed.");
    return {};
  }
  const auto bytes = std::as_bytes(std::span(form.bytes));
  return {bytes.begin(), bytes.end()};
}

// A log that the helper writes; what it gained since the request began is for the person who asked.
class Log {
 public:
  explicit Log(const std::string& path) : path_(path), begin_(size()) {}

  void show() const {
    std::ifstream log(path_, std::ios::binary);
    log.seekg(size() < begin_ ? 0 : static_cast<std::streamoff>(begin_));  // shorter: rotated meanwhile
    // Paths and versions in it came from elsewhere, and a terminal obeys control characters.
    for (std::string line; std::getline(log, line);) {
      std::ranges::replace_if(
          line, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
      tell("  " + line);
    }
  }

 private:
  std::uintmax_t size() const {
    std::error_code none;
    const std::uintmax_t bytes = std::filesystem::file_size(path_, none);
    return none ? 0 : bytes;
  }

  const std::string path_;
  const std::uintmax_t begin_;
};

bool acceptsInterruption() {
  std::cout << "Audio is running and will be interrupted. Continue? [y/n] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y";
}

// Makes a request that may interrupt audio: first without leave to do so, and again with it where a person gives it.
// Tells what came of it; nothing when the connection ended before the reply.
template <typename Request>
std::optional<std::string> askAboutAudio(ServiceClient& service, const std::string& logPath, const Request& request) {
  const Log log(logPath);
  const auto send = [&](bool accept) {
    return ask<std::string>(
        service, [&](HalvoHelperProtocol& helper, const TextReply& reply) { request(helper, accept, reply); });
  };
  auto reply = send(false);
  if (reply && codeOf(*reply) == "audio_active" && acceptsInterruption()) reply = send(true);
  log.show();
  tell(reply ? meaningOf(*reply)
             : "The helper ended before it replied. How far it came, the last lines of " + logPath + " say.");
  return reply;
}

bool install(ServiceClient& service, const AuthorizationBlob& approval, const std::string& package,
             const std::string& manifest) {
  const auto reply = askAboutAudio(
      service, "/var/log/halvo-install.log", [&](HalvoHelperProtocol& helper, bool accept, const TextReply& take) {
        // The helper has another working directory.
        helper.installSystemPkg(approval, std::filesystem::absolute(package), manifest, accept, take);
      });
  return reply && codeOf(*reply) == "ok";
}

// The parts, the application, the helper: in this order, since the helper removes the rest, and over one connection
// with one approval, since the system would grant neither to a program whose file is gone.
bool uninstall(ServiceClient& service, const AuthorizationBlob& approval) {
  const auto parts = askAboutAudio(service, "/var/log/halvo-uninstall.log",
                                   [&](HalvoHelperProtocol& helper, bool accept, const TextReply& take) {
                                     helper.prepareForRemoval(approval, accept, take);
                                   });
  if (!parts || codeOf(*parts) != "ok") return false;
  const auto bundle = ask<bool>(service, [&](HalvoHelperProtocol& helper, const halvo::BoolReply& take) {
    helper.removeAppBundle(approval, member(*parts, "gui_app_path").value_or(""), take);
  });
  if (!bundle.value_or(false)) {
    tell("The application could not be removed. It and its helper stay.");
    return false;
  }
  const auto gone = ask<bool>(service, [&](HalvoHelperProtocol& helper, const halvo::BoolReply& take) {
    helper.finalizeRemoval(approval, take);
  });
  tell(gone.value_or(false) ? "Halvo is removed." : "Halvo is removed, but its helper may still be registered.");
  return gone.value_or(false);
}

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace

int main(int argc, char* argv[]) try {
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  const bool installs = words.size() == 3 && words[0] == "install";
  if (!installs && words != std::vector<std::string>{"uninstall"}) {
    tell("usage: halvo-example install PACKAGE MANIFEST | uninstall");
    return 64;
  }
  const auto service = ServiceClient::forMachService(std::string(halvo::kHalvoHelperMachService));
  // What can fail without a password fails before one is asked for.
  if (!helperServes(*service)) return 1;
  const Authorization authorization = newAuthorization();
  const AuthorizationBlob approval = approvalThrough(authorization);
  if (approval.empty()) return 1;
  const bool done =
      installs ? install(*service, approval, words[1], contentOf(words[2])) : uninstall(*service, approval);
  return done ? 0 : 1;
} catch (const std::exception& failure) {
  std::cerr << "halvo-example: " << failure.what() << '\n';
  return 70;
}
