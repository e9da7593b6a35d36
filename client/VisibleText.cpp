#include "client/VisibleText.h"

namespace halvo {
namespace {

// The number of bytes of the control character that `text` begins with, 0 for anything else. Those of the second block
// (U+0080 to U+009F) open sequences on some terminals as well; in UTF-8 they are two bytes.
std::size_t controlCharacterLength(std::string_view text) {
  constexpr unsigned char kFirstPrintable = 0x20;
  constexpr unsigned char kDelete = 0x7F;
  constexpr unsigned char kSecondBlock = 0xC2;
  constexpr unsigned char kLastOfSecondBlock = 0x9F;
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < kFirstPrintable || first == kDelete) return 1;
  if (first != kSecondBlock || text.size() == 1) return 0;
  const auto second = static_cast<unsigned char>(text[1]);
  return second > kDelete && second <= kLastOfSecondBlock ? 2 : 0;
}

void appendCode(unsigned char byte, std::string& visible) {
  visible += '\\';
  for (const unsigned shift : {6U, 3U, 0U}) visible += static_cast<char>('0' + ((byte >> shift) & 7U));
}

}  // namespace

std::string visibleText(std::string_view text) {
  std::string visible;
  while (!text.empty()) {
    const std::size_t length = controlCharacterLength(text);
    for (const char c : text.substr(0, length)) appendCode(static_cast<unsigned char>(c), visible);
    if (length == 0) visible += text[0];
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return visible;
}

}  // namespace halvo
