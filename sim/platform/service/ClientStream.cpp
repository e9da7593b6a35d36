#include "sim/platform/service/ClientStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace halvo::sim {
namespace {

using Clock = std::chrono::steady_clock;

bool waitForInput(int socket, const std::optional<Clock::time_point>& deadline) {
  for (;;) {
    int timeout = -1;
    if (deadline) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
      if (left <= 0) return false;
      timeout = static_cast<int>(left);
    }
    pollfd input{.fd = socket, .events = POLLIN, .revents = 0};
    const int ready = ::poll(&input, 1, timeout);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

}  // namespace

bool ClientStream::readMore(const std::optional<Clock::time_point>& deadline) {
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_), buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
            buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  if (end_ == kRoom) return false;
  for (;;) {
    if (!waitForInput(socket_, deadline)) return false;
    const ssize_t count = ::recv(socket_, buffer_.data() + end_, kRoom - end_, MSG_DONTWAIT);
    if (count > 0) {
      end_ += static_cast<std::size_t>(count);
      return true;
    }
    if (count == 0 || (errno != EAGAIN && errno != EINTR)) return false;
  }
}

}  // namespace halvo::sim
