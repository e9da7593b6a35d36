// What a client sends, as a stream of bytes.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string_view>

namespace halvo::sim {

class ClientStream {
 public:
  // The socket stays the caller's.
  explicit ClientStream(int socket) : socket_(socket) {}

  // What has come and was not taken; stays in place until the next call of readMore().
  [[nodiscard]] std::string_view bytes() const { return {buffer_.data() + begin_, end_ - begin_}; }
  void take(std::size_t count) { begin_ += count; }

  // Waits until more has come. False when the client has gone, the deadline has passed, or there is no room for more.
  bool readMore(const std::optional<std::chrono::steady_clock::time_point>& deadline = std::nullopt);

 private:
  static constexpr std::size_t kRoom = 16UL * 1024;

  const int socket_;
  std::array<char, kRoom> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace halvo::sim
