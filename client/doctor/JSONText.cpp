#include "client/doctor/JSONText.h"

#include <cstddef>

#include "HalvoHelper/text/Text.h"

namespace halvo {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// A control character's two last digits; the others are 0.
void appendControl(std::string& quoted, char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  quoted += "\\u00";
  quoted += kDigits[byte >> 4U];
  quoted += kDigits[byte & 0xFU];
}

void appendEscaped(std::string& quoted, std::string_view wellFormed) {
  constexpr unsigned char kFirstPrintable = 0x20;
  for (const char c : wellFormed) {
    if (c == '"' || c == '\\') quoted += '\\';
    const bool isControl = static_cast<unsigned char>(c) < kFirstPrintable;
    isControl ? appendControl(quoted, c) : quoted.push_back(c);
  }
}

}  // namespace

std::string jsonString(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const std::size_t sound = halvoLeadingUTF8(text);
    appendEscaped(quoted, text.substr(0, sound));
    text.remove_prefix(sound);
    if (text.empty()) break;
    quoted += kReplacement;
    text.remove_prefix(1);
  }
  return quoted + "\"";
}

std::string jsonBoolean(bool value) { return value ? "true" : "false"; }

std::string jsonNumber(std::int64_t value) { return std::to_string(value); }

std::string jsonArray(const std::vector<std::string>& values) {
  std::string list;
  for (const std::string& value : values) list += (list.empty() ? "" : ",") + value;
  return "[" + list + "]";
}

std::string jsonObject(std::initializer_list<std::pair<std::string_view, std::string>> members) {
  std::string list;
  for (const auto& [key, value] : members) list += (list.empty() ? "" : ",") + jsonString(key) + ":" + value;
  return "{" + list + "}";
}

}  // namespace halvo
