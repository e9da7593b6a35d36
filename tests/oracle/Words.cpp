#include "tests/oracle/Words.h"

#include <charconv>
#include <stdexcept>

namespace halvo {
namespace {

[[noreturn]] void refuse(const char* what, std::string_view word) {
  throw std::invalid_argument(std::string(what) + ": " + std::string(word));
}

template <typename Number>
Number parse(std::string_view digits, int base) {
  Number number{};
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
  if (error != std::errc() || stop != end) refuse("no number", digits);
  return number;
}

}  // namespace

Words wordsOf(std::string_view line) {
  Words words;
  while (true) {
    const std::size_t blank = line.find(' ');
    words.emplace_back(line.substr(0, blank));
    if (blank == std::string_view::npos) return words;
    line.remove_prefix(blank + 1);
  }
}

std::string lineOf(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string textOf(std::string_view word) {
  if (!word.starts_with('=') || word.size() % 2 == 0) refuse("no text", word);
  std::string text;
  for (std::size_t at = 1; at < word.size(); at += 2) {
    text.push_back(static_cast<char>(parse<std::uint8_t>(word.substr(at, 2), 16)));
  }
  return text;
}

std::optional<std::string> optionalTextOf(std::string_view word) {
  if (word == "-") return std::nullopt;
  return textOf(word);
}

std::int64_t numberOf(std::string_view word) { return parse<std::int64_t>(word, 10); }

std::string wordOfText(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string word = "=";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    word += {kDigits[byte >> 4U], kDigits[byte & 0xFU]};
  }
  return word;
}

std::string wordOfTruth(bool truth) { return truth ? "true" : "false"; }

}  // namespace halvo
