// Talks to the simulated launchd. launchctl, killall and the service registration are thin layers over this.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/support/ChildProcess.h"

namespace halvo::sim {

struct ControlRequest {
  std::string verb;  // bootstrap, bootout, print, killall, register, submit, unregister, registration or run
  std::vector<std::string> arguments;
};

// What launchd answered: 0 or the exit status that launchctl has for this failure, and the words that go with it.
struct ControlReply {
  int status = 0;
  std::string text;
  bool operator==(const ControlReply&) const = default;
};

// The control socket keeps messages apart: one request and one reply per connection, each a JSON text of at most this
// many bytes. With "run" come the descriptors of the command's standard streams.
inline constexpr std::size_t kMaxControlMessage = 64UL * 1024;
inline constexpr std::size_t kPassedStreams = 3;
std::string toText(const ControlReply& reply);
std::optional<ControlRequest> requestFromText(std::string_view text);

// What running a command answers where its user does not exist.
inline constexpr int kNoSuchUser = 126;

// The answer when no launchd listens.
inline constexpr int kLaunchdUnreachable = 71;

// Every call connects, asks, and blocks until launchd has answered. Changing anything takes uid 0; others get 1
// (Operation not permitted), unless it says otherwise. A domain is written "system" or "gui/501". Never throws.
class ControlClient {
 public:
  // The launchd of the simulated Mac that this process runs in.
  ControlClient();
  // The launchd listening on `socket`, as seen from outside the simulated Mac.
  explicit ControlClient(std::filesystem::path socket);

  // Loads the job that the property list describes. 5: loaded already, or no usable property list. 36: the job is being
  // ended. 112: no such domain.
  ControlReply bootstrap(const std::string& domain, const std::string& plistPath) const;
  // Stops and forgets a job, written "system/com.halvo.broker"; the answer comes when its process is gone. 3: no such
  // job. 36: it is being ended already. 112: no such domain.
  ControlReply bootout(const std::string& job) const;
  // Describes a domain, or a job in one. 112: no such domain. 113: no such job.
  ControlReply print(const std::string& target) const;
  // Sends SIGTERM to every job whose program has this name. 1: none runs.
  ControlReply killall(const std::string& processName) const;
  // Remembers the property list across restarts and loads its job into the system domain. Refuses as bootstrap() does.
  ControlReply registerService(const std::string& plistPath) const;
  // The same as an application asks for it, who need not be root. Where an administrator has to approve, the job is not
  // loaded and the answer is 1; registerService() is the approval. 12: registered already.
  ControlReply submitService(const std::string& plistPath) const;
  // "enabled", "requires-approval" or "not-registered".
  ControlReply registrationOf(const std::string& plistPath) const;
  // Forgets the registration of the property list with this file name and stops answering its services. A process of
  // the job that is running goes on until it is booted out or ends. Takes no root. The description of the failure, or
  // nothing.
  std::optional<std::string> unregisterService(const std::string& plistName) const;

  // Runs a command as `user` with these standard streams, in /, and blocks until it has ended: its exit status, 128 +
  // the number of the signal that ended it, 126 when that user does not exist, 127 when the program does not. Nothing
  // when launchd cannot be reached, refuses, or ends first.
  [[nodiscard]] std::optional<int> run(uid_t user, const std::vector<std::string>& command,
                                       const ChildStreams& streams) const;

 private:
  [[nodiscard]] ControlReply ask(const ControlRequest& request, const ChildStreams* streams = nullptr) const;

  std::filesystem::path socket_;
};

}  // namespace halvo::sim
