#include "sim/tools/Xml.h"

#include <array>
#include <utility>

namespace halvo::sim {
namespace {

using namespace std::string_view_literals;

constexpr std::array kEntities = {std::pair{'&', "&amp;"sv},  std::pair{'<', "&lt;"sv},    std::pair{'>', "&gt;"sv},
                                  std::pair{'"', "&quot;"sv}, std::pair{'\'', "&apos;"sv}, std::pair{'\n', "&#10;"sv},
                                  std::pair{'\t', "&#9;"sv},  std::pair{'\r', "&#13;"sv}};

// The start tag's text between the element's name and its ">", which cannot stand in an attribute that was escaped.
std::optional<std::string_view> startTag(std::string_view document, std::string_view element) {
  const std::size_t begin = document.find("<" + std::string(element) + " ");
  if (begin == std::string_view::npos) return std::nullopt;
  const std::string_view rest = document.substr(begin + element.size() + 1);
  const std::size_t end = rest.find('>');
  if (end == std::string_view::npos) return std::nullopt;
  return rest.substr(0, end);
}

std::string unescaped(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    std::size_t length = 1;
    char character = text.front();
    for (const auto& [decoded, entity] : kEntities) {
      if (!text.starts_with(entity)) continue;
      character = decoded;
      length = entity.size();
    }
    plain += character;
    text.remove_prefix(length);
  }
  return plain;
}

}  // namespace

std::string xmlEscaped(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    std::string_view piece(&character, 1);
    for (const auto& [decoded, entity] : kEntities) {
      if (decoded == character) piece = entity;
    }
    escaped += piece;
  }
  return escaped;
}

std::optional<std::string> xmlAttribute(std::string_view document, std::string_view element,
                                        std::string_view attribute) {
  const auto tag = startTag(document, element);
  if (!tag) return std::nullopt;
  const std::string opening = " " + std::string(attribute) + "=\"";
  const std::size_t begin = tag->find(opening);
  if (begin == std::string_view::npos) return std::nullopt;
  const std::string_view value = tag->substr(begin + opening.size());
  const std::size_t end = value.find('"');
  if (end == std::string_view::npos) return std::nullopt;
  return unescaped(value.substr(0, end));
}

std::string propertyList(std::string_view dictionary) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  text += "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" ";
  text += "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n";
  text += "<plist version=\"1.0\">\n<dict>\n";
  text += dictionary;
  text += "</dict>\n</plist>\n";
  return text;
}

std::string plistString(std::string_view key, std::string_view value) {
  return "\t<key>" + std::string(key) + "</key>\n\t<string>" + xmlEscaped(value) + "</string>\n";
}

}  // namespace halvo::sim
