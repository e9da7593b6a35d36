#include "sim/frameworks/security/Guest.h"

#include <Security/Security.h>
#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <string_view>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/Processes.h"

namespace halvo::sim {
namespace {

constexpr OSStatus kErrnoBase = 100000;

// Acts on files as another user while it lives; concerns the calling thread only.
class FileSystemIdentity {
 public:
  FileSystemIdentity(uid_t uid, gid_t gid) {
    // The group first: with a user other than root, the right to change the group is gone.
    previousGroup_ = ::setfsgid(gid);
    previousUser_ = ::setfsuid(uid);
  }
  FileSystemIdentity(const FileSystemIdentity&) = delete;
  FileSystemIdentity& operator=(const FileSystemIdentity&) = delete;
  ~FileSystemIdentity() {
    ::setfsuid(static_cast<uid_t>(previousUser_));
    ::setfsgid(static_cast<gid_t>(previousGroup_));
  }

 private:
  int previousUser_ = 0;
  int previousGroup_ = 0;
};

// Asks about a process; in a container root may lack the right to look at another user's process, and then asks as that
// user, who never does. `ask` answers a negative number with errno set when it fails.
template <typename Ask>
ssize_t askAbout(pid_t pid, const Ask& ask) {
  const std::string process = "/proc/" + std::to_string(pid);
  const ssize_t answer = ask(process + "/exe");
  if (answer >= 0 || errno != EACCES || ::geteuid() != 0) return answer;
  struct stat owner {};
  if (::stat(process.c_str(), &owner) != 0) return -1;
  const FileSystemIdentity asOwner(owner.st_uid, owner.st_gid);
  return ask(process + "/exe");
}

// The file that runs, whatever lies at its path by now.
UniqueDescriptor openExecutable(pid_t pid) {
  return UniqueDescriptor(static_cast<int>(
      askAbout(pid, [](const std::string& link) { return ssize_t{::open(link.c_str(), O_RDONLY | O_CLOEXEC)}; })));
}

// Where the program lay when it was started.
std::string pathOfExecutable(pid_t pid) {
  constexpr std::string_view kGone = " (deleted)";
  std::string path(PATH_MAX, '\0');
  const ssize_t length =
      askAbout(pid, [&path](const std::string& link) { return ::readlink(link.c_str(), path.data(), path.size()); });
  path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  struct stat info {};
  const bool marked = path.ends_with(kGone) && ::stat(path.c_str(), &info) != 0;
  return marked ? path.substr(0, path.size() - kGone.size()) : path;
}

bool isSameFile(int one, int other) {
  struct stat first {};
  struct stat second {};
  return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

GuestLookup failed(OSStatus status) { return {status, {}}; }

}  // namespace

GuestLookup findGuest(pid_t pid, std::optional<std::uint32_t> version) {
  const auto before = processVersion(pid);
  if (!before) return failed(kErrnoBase + ESRCH);
  if (version && *version != *before) return failed(errSecCSNoSuchCode);

  const UniqueDescriptor running = openExecutable(pid);
  if (!running.valid()) return failed(kErrnoBase + errno);
  const UniqueDescriptor onDisk(::open(pathOfExecutable(pid).c_str(), O_RDONLY | O_CLOEXEC));
  if (!onDisk.valid()) return failed(kErrnoBase + errno);
  Guest guest{.process = Guest::Process{pid, *before},
              .signature = readCodeSignature(running.get()),
              .intact = signedCodeIsIntact(running.get()),
              .replaced = !isSameFile(running.get(), onDisk.get())};
  // The number may have passed to another process between the first look and the open.
  if (processVersion(pid) != before) return failed(errSecCSNoSuchCode);
  return {errSecSuccess, std::move(guest)};
}

bool guestStillRuns(const Guest& guest) {
  return !guest.process || processVersion(guest.process->pid) == guest.process->version;
}

}  // namespace halvo::sim
