#include "platform/JSONNumber.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace halvo {
namespace {

// No integer of 64 bits has more digits.
constexpr std::int64_t kMostDigits = 19;

// Cuts the digits off the front of `text`.
std::string_view takeDigits(std::string_view& text) {
  const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
  text.remove_prefix(digits.size());
  return digits;
}

bool takeOne(std::string_view& text, std::string_view ofThese) {
  const bool found = !text.empty() && ofThese.find(text.front()) != std::string_view::npos;
  if (found) text.remove_prefix(1);
  return found;
}

// Nothing when the integer does not fit.
std::optional<std::int64_t> integerIn(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// The power of ten at the end of a number, zero when it has none; nothing when it is absurdly large.
std::optional<std::int64_t> powerOfTen(std::string_view text) {
  if (!takeOne(text, "eE")) return 0;
  takeOne(text, "+");
  const auto power = integerIn(text);
  // No number of digits makes up for a power that is this far from zero, and sums with smaller ones fit.
  constexpr std::int64_t kFarthest = INT64_MAX / 2;
  return power && *power <= kFarthest && *power >= -kFarthest ? power : std::nullopt;
}

}  // namespace

bool isJSONNumber(std::string_view text) {
  takeOne(text, "-");
  const std::string_view whole = takeDigits(text);
  if (whole.empty() || (whole.size() > 1 && whole.front() == '0')) return false;
  if (takeOne(text, ".") && takeDigits(text).empty()) return false;
  if (takeOne(text, "eE")) {
    takeOne(text, "+-");
    if (takeDigits(text).empty()) return false;
  }
  return text.empty();
}

std::optional<std::int64_t> wholeJSONNumber(std::string_view number) {
  const std::string sign = takeOne(number, "-") ? "-" : "";
  std::string digits(takeDigits(number));
  const std::string_view fraction = takeOne(number, ".") ? takeDigits(number) : std::string_view();
  digits += fraction;
  digits.erase(0, digits.find_first_not_of('0'));
  if (digits.empty()) return 0;

  const std::size_t zeros = digits.size() - 1 - digits.find_last_not_of('0');
  digits.resize(digits.size() - zeros);
  const auto power = powerOfTen(number);
  if (!power) return std::nullopt;
  // What the digits are to be multiplied with; the last of them is not zero.
  const std::int64_t scale = *power + static_cast<std::int64_t>(zeros) - static_cast<std::int64_t>(fraction.size());
  if (scale < 0 || scale > kMostDigits) return std::nullopt;
  return integerIn(sign + digits + std::string(static_cast<std::size_t>(scale), '0'));
}

}  // namespace halvo
