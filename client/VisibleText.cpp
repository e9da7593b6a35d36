#include "client/VisibleText.h"

namespace halvo {

std::string visibleText(std::string_view text) {
  constexpr unsigned char kFirstPrintable = 0x20;
  constexpr unsigned char kDelete = 0x7F;
  std::string visible;
  visible.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= kFirstPrintable && byte != kDelete) {
      visible += c;
      continue;
    }
    visible += '\\';
    for (const unsigned shift : {6U, 3U, 0U}) visible += static_cast<char>('0' + ((byte >> shift) & 7U));
  }
  return visible;
}

}  // namespace halvo
