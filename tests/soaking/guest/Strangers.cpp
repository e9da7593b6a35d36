// Clients that are to be refused, or that use an approval which is not theirs.
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "client/AdminGrant.h"
#include "tests/soaking/guest/Strangers.h"
#include "tests/soaking/guest/Verbs.h"
#include "tests/soaking/guest/Words.h"

namespace halvo::soak {
namespace {

Outcome pingOnce() {
  return converse().ask([](auto& helper, const TextReply& text, const BoolReply&) { helper.ping(text); });
}

// Connects and sends the first bytes of a conversation.
UniqueDescriptor rawConnection() {
  constexpr const char* kService = "/var/run/mach/com.halvo.helper";
  constexpr std::string_view kGreeting("\0AUTH EXTERNAL\r\nDATA\r\nBEGIN\r\n", 30);
  UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strcpy(address.sun_path, kService);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return {};
  // The helper may have hung up by now.
  static_cast<void>(::send(socket.get(), kGreeting.data(), kGreeting.size(), MSG_NOSIGNAL));
  return socket;
}

bool endsWell(pid_t child) {
  int status = 0;
  return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

void connectAndEnd() {
  const UniqueDescriptor socket = rawConnection();
  ::_exit(socket.valid() ? 0 : 1);
}

int knock(const Arguments& arguments) {
  int answered = 0;
  for (int left = std::stoi(arguments.at(0)); left > 0; --left) {
    if (!std::holds_alternative<ServiceFailure>(pingOnce())) ++answered;
  }
  std::cout << answered << '\n';
  return 0;
}

int die(const Arguments& arguments) {
  for (int left = std::stoi(arguments.at(0)); left > 0; --left) {
    const pid_t child = ::fork();
    if (child == 0) connectAndEnd();
    if (!endsWell(child)) return 1;
  }
  return 0;
}

int linger(const Arguments& arguments) {
  std::cout << "waiting" << std::endl;
  waitForFile(arguments.at(0));
  std::cout << describe(pingOnce()) << '\n';
  return 0;
}

int grant(const Arguments& arguments) {
  auto obtained = AdminGrant::obtain();
  if (const auto* refusal = std::get_if<AdminGrant::Refusal>(&obtained)) {
    std::cerr << "no approval: " << refusal->status << '\n';
    return 1;
  }
  std::optional<AdminGrant> held = std::move(std::get<AdminGrant>(obtained));
  const std::string form = hexOf(held->externalForm());
  if (arguments.size() > 1) held.reset();
  // In one step, for whoever waits for it.
  const std::string file = arguments.at(0) + ".form";
  std::ofstream(file + ".new") << form;
  if (::rename((file + ".new").c_str(), file.c_str()) != 0) return 1;
  waitForFile(arguments.at(0));
  return 0;
}

int replay(const Arguments& arguments) {
  const Outcome outcome = converse().ask([&](auto& helper, const TextReply& text, const BoolReply&) {
    helper.installSystemPkg(formOf(arguments.at(0)), "/nowhere.pkg", "{}", true, text);
  });
  std::cout << describe(outcome) << '\n';
  return 0;
}

}  // namespace halvo::soak
