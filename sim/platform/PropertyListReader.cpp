// The port that reads property lists, and what both its readers say of numbers and dates.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "sim/platform/PropertyLists.h"

namespace halvo {
namespace sim {
namespace {

constexpr std::uint64_t kLargestNegative = std::uint64_t{1} << 63U;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

// The sign that was cut off the front, or '+'.
char takeSign(std::string_view& text) {
  if (!text.starts_with('-') && !text.starts_with('+')) return '+';
  const char sign = text.front();
  text.remove_prefix(1);
  return sign;
}

}  // namespace

bool isPropertyListInteger(std::string_view text) {
  skipBlanks(text);
  const char sign = takeSign(text);
  skipBlanks(text);
  const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (isHexadecimal) text.remove_prefix(2);
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, value, isHexadecimal ? 16 : 10);
  if (read.ec != std::errc{} || read.ptr != end) return false;
  return sign == '+' || value <= kLargestNegative;
}

bool isPropertyListReal(std::string_view text) {
  skipBlanks(text);
  takeSign(text);
  // Not every C++ library has from_chars for doubles. strtod also takes blanks, a second sign and hexadecimal digits.
  const std::string number(text);
  const bool beginsLikeOne = number.find_first_of(" \t\n\v\f\r+-") != 0;
  if (number.empty() || !beginsLikeOne || number.find_first_of("xX") != std::string::npos) return false;
  char* end = nullptr;
  // One that is too large or too small is infinite or zero.
  static_cast<void>(std::strtod(number.c_str(), &end));
  return end == number.c_str() + number.size();
}

bool isPropertyListDate(std::string_view text) {
  constexpr std::string_view kBehindTheYear = "-00-00T00:00:00Z";
  if (text.starts_with('-')) text.remove_prefix(1);
  while (!text.empty() && isDigit(text.front())) text.remove_prefix(1);
  return std::ranges::equal(text, kBehindTheYear,
                            [](char c, char form) { return form == '0' ? isDigit(c) : c == form; });
}

}  // namespace sim

namespace {

using Node = sim::XMLPropertyListNode;

PropertyListValue valueOf(Node& node) {
  const bool isText = node.kind == Node::Kind::key || node.kind == Node::Kind::string;
  return isText ? PropertyListValue(std::move(node.text)) : PropertyListOther{};
}

std::optional<PropertyList> entriesOf(std::optional<Node> top) {
  if (!top || top->kind != Node::Kind::dictionary) return std::nullopt;
  PropertyList entries;
  for (std::size_t i = 0; i < top->children.size(); i += 2) {
    entries.insert_or_assign(std::move(top->children[i].text), valueOf(top->children[i + 1]));
  }
  return entries;
}

}  // namespace

std::optional<PropertyList> halvoReadPropertyList(std::span<const std::byte> bytes) {
  const std::string_view list(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  try {
    return list.starts_with("bplist") ? sim::readBinaryPropertyList(list) : entriesOf(sim::readXMLPropertyList(list));
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace halvo
