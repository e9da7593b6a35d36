#include "sim/machine/MachineEntry.h"

#include <unistd.h>

#include "sim/support/ChildProcess.h"

namespace halvo::sim {
namespace {

constexpr const char* kBubblewrap = "bwrap";
// Where the programs of a build for coverage leave their counts, inside the machine as outside; empty in any other.
const std::string kCounts = HALVO_COVERAGE;

std::vector<std::string> namespaces(EntryWay way) {
  switch (way) {
    case EntryWay::root:
      return {"--unshare-pid", "--as-pid-1", "--proc", "/proc"};
    case EntryWay::userNamespace:
      return {"--unshare-user", "--uid",      "0",      "--gid", "0", "--cap-add", "ALL",
              "--unshare-pid",  "--as-pid-1", "--proc", "/proc"};
    case EntryWay::sharedProcesses:
      return {"--unshare-user", "--uid", "0", "--gid", "0", "--cap-add", "ALL", "--ro-bind", "/proc", "/proc"};
  }
  return {};
}

void append(std::vector<std::string>& words, const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
}

// The folders on the way are left to root alone unless they are made for everybody; a user's program counts as well.
std::vector<std::string> folderForCounts() {
  std::vector<std::string> words;
  for (std::size_t slash = kCounts.find('/', 1); slash != std::string::npos; slash = kCounts.find('/', slash + 1)) {
    append(words, {"--perms", "0755", "--dir", kCounts.substr(0, slash)});
  }
  append(words, {"--bind", kCounts, kCounts});
  return words;
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::string describe(EntryWay way) {
  constexpr std::array kWords = {"as root, with several accounts", "in a user namespace, with one account",
                                 "in a user namespace with the host's processes, with one account"};
  return kWords.at(static_cast<std::size_t>(way));
}

std::vector<std::string> entryCommand(EntryWay way, const std::filesystem::path& root,
                                      const std::vector<std::string>& command) {
  std::vector<std::string> words = {kBubblewrap, "--die-with-parent", "--bind", root.string(), "/"};
  append(words, {"--ro-bind", "/usr/lib", "/usr/lib", "--ro-bind-try", "/usr/lib64", "/usr/lib64"});
  // Device by device: the usual bundle also mounts a terminal file system, which many containers forbid.
  append(words, {"--perms", "0755", "--tmpfs", "/dev"});
  for (const std::string device : {"/dev/null", "/dev/zero", "/dev/random", "/dev/urandom"}) {
    append(words, {"--dev-bind", device, device});
  }
  append(words, namespaces(way));
  if (!kCounts.empty()) append(words, folderForCounts());
  append(words, {"--chdir", "/", "--"});
  append(words, command);
  return words;
}

std::optional<std::string> obstacleOf(EntryWay way, const std::filesystem::path& root) {
  if (way == EntryWay::root && ::geteuid() != 0) return "this takes root";
  const CommandResult result = runChild(entryCommand(way, root, {"/sbin/launchd", "--probe"}));
  if (result.status == 0) return std::nullopt;
  if (result.status == kProgramMissing) return "bubblewrap (bwrap) is not installed";
  return result.err.empty() ? "it ended with status " + std::to_string(result.status) : firstLine(result.err);
}

std::string entryAdvice() {
  return "Install bubblewrap (apt-get install bubblewrap) and run this as root, or allow unprivileged user namespaces; "
         "in a container, allow it to make namespaces (docker run --privileged).";
}

}  // namespace halvo::sim
