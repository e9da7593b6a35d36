#include "sim/launchd/ListeningSocket.h"

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

namespace halvo::sim {
namespace {

constexpr int kBacklog = 128;
constexpr mode_t kEverybody = 0666;

}  // namespace

std::optional<ListeningSocket> ListeningSocket::open(const std::filesystem::path& name, int type) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& text = name.native();
  if (text.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return std::nullopt;
  }
  std::memcpy(address.sun_path, text.c_str(), text.size() + 1);

  UniqueDescriptor descriptor(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
  if (!descriptor.valid()) return std::nullopt;
  ::unlink(text.c_str());
  if (::bind(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return std::nullopt;
  ListeningSocket socket(std::move(descriptor), name);
  // Nobody can connect before listen(2), so there is no moment at which the name has narrower rights.
  if (::chmod(text.c_str(), kEverybody) != 0 || ::listen(socket.descriptor(), kBacklog) != 0) return std::nullopt;
  return socket;
}

ListeningSocket::ListeningSocket(UniqueDescriptor descriptor, std::filesystem::path name)
    : descriptor_(std::move(descriptor)), name_(std::move(name)) {}

ListeningSocket::~ListeningSocket() {
  if (descriptor_.valid()) ::unlink(name_.c_str());
}

}  // namespace halvo::sim
