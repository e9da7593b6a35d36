#include "sim/demo/Markup.h"

#include <utf8.h>

#include <iterator>

namespace halvo::sim {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isControl(char32_t letter) {
  return (letter < 0x20 && letter != '\t' && letter != '\n') || (letter >= 0x7F && letter < 0xA0);
}

// The number in hundredths, with as many digits behind the point.
std::string decimal(std::int64_t number, std::int64_t unit) {
  std::string digits = std::to_string(number % unit);
  digits.insert(0, std::to_string(unit).size() - 1 - digits.size(), '0');
  return std::to_string(number / unit) + "." + digits;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string sound;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(sound));
  std::string out;
  for (auto at = sound.begin(); at != sound.end();) {
    const char32_t letter = utf8::next(at, sound.end());
    switch (letter) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        utf8::append(isControl(letter) ? kReplacement : letter, std::back_inserter(out));
    }
  }
  return out;
}

std::string element(std::string_view name, std::string_view attributes, std::string_view content) {
  std::string text = "<" + std::string(name);
  if (!attributes.empty()) text += " " + std::string(attributes);
  return text + ">" + std::string(content) + "</" + std::string(name) + ">";
}

std::string milliseconds(std::int64_t microseconds) { return decimal(microseconds / 100, 10); }

std::string percentage(std::int64_t part, std::int64_t whole) {
  constexpr std::int64_t kHundredths = 10'000;
  return decimal(whole == 0 ? kHundredths : part * kHundredths / whole, 100) + "%";
}

}  // namespace halvo::sim
