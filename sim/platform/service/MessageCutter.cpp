#include "sim/platform/service/MessageCutter.h"

#include <algorithm>

#include "sim/platform/service/WireFormat.h"

namespace halvo::sim {
namespace {

// Byte order, type, flags, version; then the length of the body, the serial, the length of the header fields.
constexpr std::size_t kFixedHeader = 16;
constexpr std::size_t kBodyLengthAt = 4;
constexpr std::size_t kFieldsLengthAt = 12;

std::uint64_t lengthAt(std::string_view header, std::size_t position) {
  const bool bigEndian = header.front() == 'B';
  std::uint64_t length = 0;
  for (std::size_t i = 0; i < sizeof(std::uint32_t); ++i) {
    const std::size_t at = position + (bigEndian ? i : sizeof(std::uint32_t) - 1 - i);
    length = (length << 8U) | static_cast<unsigned char>(header[at]);
  }
  return length;
}

std::uint64_t lengthOf(std::string_view header) {
  constexpr std::uint64_t kAlignment = 8;
  const std::uint64_t fields = (lengthAt(header, kFieldsLengthAt) + kAlignment - 1) / kAlignment * kAlignment;
  return kFixedHeader + fields + lengthAt(header, kBodyLengthAt);
}

}  // namespace

MessageCutter::Piece MessageCutter::next(std::string_view bytes) {
  if (left_ == 0) {
    if (bytes.size() < kFixedHeader) return {};
    left_ = lengthOf(bytes);
    if (left_ > kMaxMessageBytes) return {.tooLarge = true};
  }
  const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(left_, bytes.size()));
  left_ -= length;
  return {.length = length, .endsMessage = length != 0 && left_ == 0};
}

}  // namespace halvo::sim
