// The smallest application of the helper, in Objective-C++. It lies in the application's bundle, whose property list
// registers the helper. A program with windows goes on in the blocks where this one waits.
#import <Foundation/Foundation.h>
#include <HalvoHelperXPC/Constants.h>
#import <HalvoHelperXPC/HalvoHelperXPCProtocol.h>
#include <HalvoHelperXPC/ReplyParsers.h>
#include <Security/Security.h>
#import <ServiceManagement/ServiceManagement.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "examples/Replies.h"

namespace {

using example::codeOf, example::meaningOf, example::member;

using Helper = id<HalvoHelperProtocol>;
using TextReply = void (^)(NSString*);
using BoolReply = void (^)(bool);

// Neither has a value for what is no UTF-8.
NSString* foundationText(std::string_view text) {
  NSString* const converted = [NSString stringWithUTF8String:std::string(text).c_str()];
  return converted == nil ? @"" : converted;
}
std::string plainText(NSString* text) {
  const char* const converted = text.UTF8String;
  return converted == nullptr ? "" : converted;
}

void tell(std::string_view sentence) { std::cout << sentence << '\n' << std::flush; }

// Whether launchd knows the helper and may start it. The system asks an administrator once, in its settings.
bool isRegistered() {
  SMAppService* const service = [SMAppService daemonServiceWithPlistName:@"com.halvo.helper.plist"];
  NSError* error = nil;
  if (service.status != SMAppServiceStatusEnabled) [service registerAndReturnError:&error];
  switch (service.status) {
    case SMAppServiceStatusEnabled:
      return true;
    case SMAppServiceStatusRequiresApproval:
      tell("Allow Halvo under Login Items in the window that opens, and try again.");
      [SMAppService openSystemSettingsLoginItems];
      return false;
    case SMAppServiceStatusNotRegistered:
    case SMAppServiceStatusNotFound:
      break;
  }
  tell("The helper could not be registered. Install Halvo again. " +
       (error == nil ? std::string() : plainText(error.localizedDescription)));
  return false;
}

NSXPCConnection* newConnection() {
  NSXPCConnection* const connection =
      [[NSXPCConnection alloc] initWithMachServiceName:foundationText(halvo::kHalvoHelperMachService)
                                               options:NSXPCConnectionPrivileged];
  connection.remoteObjectInterface = [NSXPCInterface interfaceWithProtocol:@protocol(HalvoHelperProtocol)];
  [connection resume];
  return connection;
}

// Sends one request and waits for its reply or its error; exactly one of them comes. There is no limit of time: whoever
// stops waiting for an install stops nothing. Nothing when the connection ended first.
template <typename Reply, typename Send>
std::optional<Reply> ask(NSXPCConnection* connection, const Send& send) {
  const auto answer = std::make_shared<std::promise<std::optional<Reply>>>();
  const Helper helper = [connection remoteObjectProxyWithErrorHandler:^(NSError*) {
    answer->set_value(std::nullopt);
  }];
  send(helper, ^(Reply reply) {
    answer->set_value(reply);
  });
  return answer->get_future().get();
}

template <typename Send>
std::optional<std::string> askForText(NSXPCConnection* connection, const Send& send) {
  const auto reply = ask<NSString*>(connection, send);
  return reply ? std::optional(plainText(*reply)) : std::nullopt;
}

// Whether a helper is there that takes this program for the application, and is not too old for it.
bool helperServes(NSXPCConnection* connection) {
  const auto ping = [](Helper helper, TextReply take) { [helper pingWithReply:take]; };
  auto reply = askForText(connection, ping);
  // An idle helper exits, and what meets the exit is cut off. A request that changes nothing is made once more.
  if (!reply) reply = askForText(connection, ping);
  if (!reply) {
    tell("The helper does not answer. Start Halvo again; if that does not help, restart the Mac.");
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

// Shows the system's prompt and waits for its answer. Empty when no administrator approved.
Authorization approvedAuthorization() {
  AuthorizationRef created = nullptr;
  AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &created);
  Authorization authorization(created);
  const std::string right(halvo::kHalvoAdminRight);
  AuthorizationItem item = {right.c_str(), 0, nullptr, 0};
  const AuthorizationRights rights = {1, &item};
  constexpr AuthorizationFlags kFlags =
      kAuthorizationFlagExtendRights | kAuthorizationFlagInteractionAllowed | kAuthorizationFlagPreAuthorize;
  const OSStatus status = AuthorizationCopyRights(created, &rights, kAuthorizationEmptyEnvironment, kFlags, nullptr);
  return status == errAuthorizationSuccess ? std::move(authorization) : Authorization();
}

// What the helper checks; nil when there is no approval.
NSData* externalFormOf(const Authorization& authorization) {
  AuthorizationExternalForm form = {};
  const bool made =
      authorization && AuthorizationMakeExternalForm(authorization.get(), &form) == errAuthorizationSuccess;
  return made ? [NSData dataWithBytes:form.bytes length:sizeof form.bytes] : nil;
}

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

// Paths and versions in a log came from elsewhere, and a terminal obeys control characters.
void showSince(const std::string& before, const std::string& path) {
  std::string log = contentOf(path);
  if (log.starts_with(before)) log.erase(0, before.size());  // otherwise it was rotated meanwhile
  for (char& c : log) {
    if ((static_cast<unsigned char>(c) < ' ' && c != '\n') || c == 0x7F) c = '?';
  }
  std::cout << log << std::flush;
}

bool acceptsInterruption() {
  std::cout << "Audio is running and will be interrupted. Continue? [y/n] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y";
}

// Makes a request that may interrupt audio: first without leave to do so, and again with it where a person gives it.
template <typename Send>
std::string askAboutAudio(NSXPCConnection* connection, const std::string& logPath, const Send& send) {
  const std::string before = contentOf(logPath);
  const auto ask = [&](bool accept) {
    return askForText(connection, [&](Helper helper, TextReply take) { send(helper, accept, take); });
  };
  auto reply = ask(false);
  if (reply && codeOf(*reply) == "audio_active" && acceptsInterruption()) reply = ask(true);
  showSince(before, logPath);
  tell(reply ? meaningOf(*reply)
             : "The helper ended before it replied. How far it came, the last lines of " + logPath + " say.");
  return reply.value_or("");
}

// The package's path is absolute: the helper has another working directory.
bool install(NSXPCConnection* connection, NSData* approval, const std::string& package, const std::string& manifest) {
  const auto send = [&](Helper helper, bool accept, TextReply take) {
    [helper installSystemPkgWithAuthorization:approval
                                      pkgPath:foundationText(package)
                                 manifestJSON:foundationText(manifest)
                      acceptAudioInterruption:accept
                                    withReply:take];
  };
  return codeOf(askAboutAudio(connection, "/var/log/halvo-install.log", send)) == "ok";
}

// The parts, the application, the helper: in this order, since the helper removes the rest, and over one connection
// with one approval, since the system would grant neither to a program whose file is gone.
bool uninstall(NSXPCConnection* connection, NSData* approval) {
  const std::string parts =
      askAboutAudio(connection, "/var/log/halvo-uninstall.log", [&](Helper helper, bool accept, TextReply take) {
        [helper prepareForRemovalWithAuthorization:approval acceptAudioInterruption:accept withReply:take];
      });
  if (codeOf(parts) != "ok") return false;
  NSString* const bundle = foundationText(member(parts, "gui_app_path").value_or(""));
  const auto removed = ask<bool>(connection, [&](Helper helper, BoolReply take) {
    [helper removeAppBundleWithAuthorization:approval path:bundle withReply:take];
  });
  if (!removed.value_or(false)) {
    tell("The application could not be removed. It and its helper stay.");
    return false;
  }
  const auto gone = ask<bool>(connection, [&](Helper helper, BoolReply take) {
    [helper finalizeRemovalWithAuthorization:approval withReply:take];
  });
  tell(gone.value_or(false) ? "Halvo is removed." : "Halvo is removed, but its helper may still be registered.");
  return gone.value_or(false);
}

bool carryOut(NSXPCConnection* connection, const std::vector<std::string>& words) {
  // What can fail without a password fails before one is asked for.
  if (!helperServes(connection)) return false;
  const Authorization authorization = approvedAuthorization();
  NSData* const approval = externalFormOf(authorization);
  if (approval == nil) {
    tell("An administrator has to approve this, and none did. Nothing was changed.");
    return false;
  }
  return words[0] == "install" ? install(connection, approval, words[1], contentOf(words[2]))
                               : uninstall(connection, approval);
}

}  // namespace

int main(int argc, char* argv[]) try {
  @autoreleasepool {
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const bool installs = words.size() == 3 && words[0] == "install" && words[1].starts_with('/');
    if (!installs && words != std::vector<std::string>{"uninstall"}) {
      tell("usage: halvo-example install /PACKAGE MANIFEST | uninstall");
      return 64;
    }
    if (!isRegistered()) return 1;
    NSXPCConnection* const connection = newConnection();
    const bool done = carryOut(connection, words);
    [connection invalidate];
    return done ? 0 : 1;
  }
} catch (const std::exception& failure) {
  std::cerr << "halvo-example: " << failure.what() << '\n';
  return 70;
}
