#include "client/doctor/ShortText.h"

#include <algorithm>
#include <array>
#include <utility>

namespace halvo {
namespace {

using std::chrono::seconds;

constexpr std::size_t kWidth = 80;

bool continues(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::size_t characters(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, continues));
}

template <std::size_t N>
std::string nameOrNumber(const std::array<std::pair<std::uint32_t, const char*>, N>& names, std::uint32_t id) {
  const auto* known = std::ranges::find(names, id, &std::pair<std::uint32_t, const char*>::first);
  return known == names.end() ? std::to_string(id) : known->second;
}

}  // namespace

std::string shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most > 0 && continues(text[most])) --most;
  return std::string(text.substr(0, most)) + "...";
}

std::string ageText(seconds age) {
  constexpr seconds kMinute(60);
  constexpr seconds kHour(3600);
  constexpr seconds kDay(86'400);
  if (age < seconds::zero()) return "in the future";
  if (age < 2 * kMinute) return std::to_string(age.count()) + " s";
  if (age < 2 * kHour) return std::to_string(age / kMinute) + " min";
  if (age < 2 * kDay) return std::to_string(age / kHour) + " h";
  return std::to_string(age / kDay) + " days";
}

std::string sizeText(std::int64_t bytes) {
  constexpr std::int64_t kThousand = 1000;
  if (bytes < kThousand) return std::to_string(bytes) + " B";
  if (bytes < kThousand * kThousand) return std::to_string(bytes / kThousand) + " KB";
  return std::to_string(bytes / (kThousand * kThousand)) + " MB";
}

std::string ownerText(std::uint32_t user, std::uint32_t group) {
  constexpr std::array<std::pair<std::uint32_t, const char*>, 1> kUsers = {{{0, "root"}}};
  constexpr std::array<std::pair<std::uint32_t, const char*>, 3> kGroups = {
      {{0, "wheel"}, {20, "staff"}, {80, "admin"}}};
  return nameOrNumber(kUsers, user) + ":" + nameOrNumber(kGroups, group);
}

std::string modeText(unsigned mode) {
  std::string digits;
  for (const unsigned shift : {9U, 6U, 3U, 0U}) digits += static_cast<char>('0' + ((mode >> shift) & 7U));
  return digits.starts_with('0') ? digits.substr(1) : digits;
}

std::string wrapped(std::string_view text, std::string_view mark, std::string_view indent) {
  std::string lines;
  std::string line(mark);
  bool empty = true;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    if (!empty && characters(line) + 1 + characters(word) > kWidth) {
      lines += line + "\n";
      line = indent;
      empty = true;
    }
    if (!empty) line += ' ';
    line += word;
    empty = false;
  }
  return lines + line + "\n";
}

}  // namespace halvo
