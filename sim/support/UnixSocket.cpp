#include "sim/support/UnixSocket.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace halvo::sim {
namespace {

constexpr int kBacklog = 256;
constexpr mode_t kEverybody = 0666;

using SystemCall = int (*)(int, const sockaddr*, socklen_t);

// Gives bind(2) or connect(2) the name. A socket's address holds about a hundred bytes, and the path of a machine's
// folder may be longer: the folder is named by a descriptor instead.
bool apply(SystemCall call, const UniqueDescriptor& socket, const std::filesystem::path& name) {
  const UniqueDescriptor folder(::open(name.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!socket.valid() || !folder.valid()) return false;
  const std::string viaFolder = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name.filename().string();
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  errno = ENAMETOOLONG;
  if (viaFolder.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, viaFolder.c_str(), viaFolder.size() + 1);
  return call(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

std::optional<ListeningSocket> ListeningSocket::open(const std::filesystem::path& name, int type) {
  UniqueDescriptor descriptor(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  ::unlink(name.c_str());
  if (!apply(::bind, descriptor, name)) return std::nullopt;
  ListeningSocket socket(std::move(descriptor), name);
  // Nobody can connect before listen(2), so there is no moment at which the name has narrower rights.
  if (::chmod(name.c_str(), kEverybody) != 0 || ::listen(socket.descriptor(), kBacklog) != 0) return std::nullopt;
  return socket;
}

ListeningSocket::ListeningSocket(UniqueDescriptor descriptor, std::filesystem::path name)
    : descriptor_(std::move(descriptor)), name_(std::move(name)) {}

ListeningSocket::~ListeningSocket() {
  if (descriptor_.valid()) ::unlink(name_.c_str());
}

UniqueDescriptor connectTo(const std::filesystem::path& name, int type, std::chrono::seconds patience) {
  UniqueDescriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  const timeval longest{.tv_sec = patience.count(), .tv_usec = 0};
  ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &longest, sizeof longest);
  return apply(::connect, socket, name) ? std::move(socket) : UniqueDescriptor();
}

}  // namespace halvo::sim
