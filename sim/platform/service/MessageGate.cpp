#include "sim/platform/service/MessageGate.h"

#include <sys/socket.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "sim/platform/service/WireFormat.h"

namespace halvo::sim {
namespace {

// Byte order, type, flags, version; then the length of the body, the serial, the length of the header fields.
constexpr std::size_t kFixedHeader = 16;
constexpr std::size_t kBodyLengthAt = 4;
constexpr std::size_t kFieldsLengthAt = 12;
using FixedHeader = std::array<char, kFixedHeader>;

std::uint64_t lengthAt(const FixedHeader& header, std::size_t position) {
  std::uint32_t length = 0;
  std::memcpy(&length, header.data() + position, sizeof length);
  const bool bigEndian = header[0] == 'B';
  if (bigEndian != (std::endian::native == std::endian::big)) length = __builtin_bswap32(length);
  return length;
}

bool isTooLarge(const FixedHeader& header) {
  constexpr std::uint64_t kAlignment = 8;
  const std::uint64_t fields = (lengthAt(header, kFieldsLengthAt) + kAlignment - 1) / kAlignment * kAlignment;
  return kFixedHeader + fields + lengthAt(header, kBodyLengthAt) > kMaxMessageBytes;
}

}  // namespace

NextMessage lookAtNextMessage(int socket) {
  FixedHeader header{};
  const ssize_t seen = ::recv(socket, header.data(), header.size(), MSG_PEEK | MSG_DONTWAIT);
  if (seen < 0) return errno == EAGAIN || errno == EINTR ? NextMessage::none : NextMessage::ended;
  if (seen == 0) return NextMessage::ended;
  if (static_cast<std::size_t>(seen) < header.size()) return NextMessage::incomplete;
  return isTooLarge(header) ? NextMessage::tooLarge : NextMessage::acceptable;
}

}  // namespace halvo::sim
