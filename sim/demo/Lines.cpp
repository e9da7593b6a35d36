#include "sim/demo/Lines.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace halvo::sim {
namespace {

constexpr std::size_t kNarrowest = 24;

bool beginsCodePoint(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::size_t codePoints(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, beginsCodePoint));
}

// How many bytes the first `count` code points take.
std::size_t bytesOf(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  while (at < text.size() && (!beginsCodePoint(text[at]) || count-- > 0)) ++at;
  return at;
}

// Where a line that has room for that many code points ends.
std::size_t lineEnd(std::string_view text, std::size_t room) {
  const std::size_t most = bytesOf(text, room);
  if (most == text.size()) return most;
  const std::size_t blank = text.rfind(' ', most);
  return blank == std::string_view::npos || blank == 0 ? most : blank;
}

}  // namespace

std::size_t widthOf(int descriptor, const char* columns) {
  std::size_t said = 0;
  if (columns != nullptr) std::from_chars(columns, columns + std::strlen(columns), said);
  if (said != 0) return said;
  winsize size{};
  return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : kNoWidth;
}

std::vector<std::string> folded(std::string_view first, std::string_view rest, std::string_view text,
                                std::size_t width) {
  if (width == kNoWidth) return {std::string(first) + std::string(text)};
  std::vector<std::string> lines;
  do {
    const std::string_view prefix = lines.empty() ? first : rest;
    const std::size_t end = lineEnd(text, std::max(width, kNarrowest) - codePoints(prefix));
    lines.push_back(std::string(prefix) + std::string(text.substr(0, end)));
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(' ', end)));
  } while (!text.empty());
  return lines;
}

}  // namespace halvo::sim
