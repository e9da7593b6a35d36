#include "fuzz/support/Rules.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

namespace halvo::fuzz {
namespace {

constexpr std::array<std::string_view, 8> kLineEnds = {
    "\r\n", "\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9",
};

// Besides the line ends.
constexpr std::array<std::string_view, 18> kBlanks = {
    " ",
    "\t",
    "\xC2\xA0",
    "\xE1\x9A\x80",
    "\xE2\x80\x80",
    "\xE2\x80\x81",
    "\xE2\x80\x82",
    "\xE2\x80\x83",
    "\xE2\x80\x84",
    "\xE2\x80\x85",
    "\xE2\x80\x86",
    "\xE2\x80\x87",
    "\xE2\x80\x88",
    "\xE2\x80\x89",
    "\xE2\x80\x8A",
    "\xE2\x80\xAF",
    "\xE2\x81\x9F",
    "\xE3\x80\x80",
};

template <std::size_t count>
std::size_t lengthOfFirst(const std::array<std::string_view, count>& characters, std::string_view text) {
  for (const std::string_view character : characters) {
    if (text.starts_with(character)) return character.size();
  }
  return 0;
}

// Most characters begin none of the above, and inputs are long.
bool mayBeginSpace(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.empty() ? 'x' : text.front());
  return byte <= 0x20 || (byte >= 0xC2 && byte <= 0xE3);
}

std::size_t isAt(char character, std::string_view text) { return text.starts_with(character) ? 1 : 0; }

}  // namespace

std::size_t whiteSpaceAt(std::string_view text) {
  return mayBeginSpace(text) ? std::max(lengthOfFirst(kBlanks, text), lineEndAt(text)) : 0;
}

std::size_t lineEndAt(std::string_view text) { return mayBeginSpace(text) ? lengthOfFirst(kLineEnds, text) : 0; }

std::size_t dotAt(std::string_view text) { return isAt('.', text); }
std::size_t lineFeedAt(std::string_view text) { return isAt('\n', text); }
std::size_t slashAt(std::string_view text) { return isAt('/', text); }

std::vector<std::string> allPieces(std::string_view text, std::size_t (*separatorAt)(std::string_view)) {
  std::vector<std::string> found(1);
  while (!text.empty()) {
    const std::size_t length = separatorAt(text);
    if (length == 0) {
      found.back() += text.front();
    } else {
      found.emplace_back();
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return found;
}

std::vector<std::string> pieces(std::string_view text, std::size_t (*separatorAt)(std::string_view)) {
  auto found = allPieces(text, separatorAt);
  std::erase(found, "");
  return found;
}

std::optional<std::int64_t> decimal(const std::string& text) {
  const std::size_t sign = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
  if (text.size() == sign || text.find_first_not_of("0123456789", sign) != std::string::npos) return std::nullopt;
  errno = 0;
  const std::int64_t value = std::strtoll(text.c_str(), nullptr, 10);
  return errno == ERANGE ? std::nullopt : std::optional(value);
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

}  // namespace halvo::fuzz
