#include "platform/mac/JSONExactNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "platform/JSONNumber.h"

namespace halvo {
namespace {

constexpr std::string_view kNumberStart = "-0123456789";
constexpr std::string_view kNumberCharacters = "+-.0123456789eE";

std::string exact(const std::string& token) {
  if (!isJSONNumber(token)) return token;
  if (const auto integer = wholeJSONNumber(token)) return std::to_string(*integer);
  return std::isinf(std::strtod(token.c_str(), nullptr)) ? token : "0.5";
}

// Where the string that begins at `start` ends: behind its closing quotation mark, or behind everything without one.
std::size_t endOfString(std::string_view json, std::size_t start) {
  std::size_t at = start + 1;
  while (at < json.size() && json[at] != '"') at += json[at] == '\\' ? 2 : 1;
  return at + 1;
}

}  // namespace

std::string withExactNumbers(std::string_view json) {
  std::string text;
  text.reserve(json.size());
  for (std::size_t at = 0; at < json.size();) {
    const bool isNumber = kNumberStart.find(json[at]) != std::string_view::npos;
    std::size_t end = at + 1;
    if (json[at] == '"') end = endOfString(json, at);
    if (isNumber) end = std::min(json.find_first_not_of(kNumberCharacters, at), json.size());
    const std::string_view piece = json.substr(at, end - at);
    text += isNumber ? exact(std::string(piece)) : piece;
    at = end;
  }
  return text;
}

}  // namespace halvo
