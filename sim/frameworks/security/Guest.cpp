#include "sim/frameworks/security/Guest.h"

#include <Security/CSCommon.h>
#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "sim/support/ProcessIdentity.h"

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

// Opens the program file of a process; a negative descriptor with errno set when that fails. The link is opened and not
// read: its text says "(deleted)" once the bundle is gone, while opening reaches the file that runs.
int openExecutable(pid_t pid) {
  const std::string process = "/proc/" + std::to_string(pid);
  const std::string link = process + "/exe";
  const int descriptor = ::open(link.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0 || errno != EACCES || ::geteuid() != 0) return descriptor;

  // In a container root may lack the right to look at another user's process; that user never does.
  struct stat owner {};
  if (::stat(process.c_str(), &owner) != 0) return -1;
  const FileSystemIdentity asOwner(owner.st_uid, owner.st_gid);
  return ::open(link.c_str(), O_RDONLY | O_CLOEXEC);
}

GuestLookup failed(OSStatus status) { return {status, {}}; }

}  // namespace

GuestLookup findGuest(pid_t pid, std::optional<std::uint32_t> version) {
  const auto before = processVersion(pid);
  if (!before) return failed(kErrnoBase + ESRCH);
  if (version && *version != *before) return failed(errSecCSNoSuchCode);

  const int executable = openExecutable(pid);
  if (executable < 0) return failed(kErrnoBase + errno);
  Guest guest{Guest::Process{pid, *before}, readCodeSignature(executable)};
  ::close(executable);
  // The number may have passed to another process between the first look and the open.
  if (processVersion(pid) != before) return failed(errSecCSNoSuchCode);
  return {errSecSuccess, std::move(guest)};
}

bool guestStillRuns(const Guest& guest) {
  return !guest.process || processVersion(guest.process->pid) == guest.process->version;
}

}  // namespace halvo::sim
