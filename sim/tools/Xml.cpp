#include "sim/tools/Xml.h"

#include <expat.h>

#include <array>
#include <memory>
#include <utility>

namespace halvo::sim {
namespace {

using namespace std::string_view_literals;

constexpr std::array kEntities = {std::pair{'&', "&amp;"sv},  std::pair{'<', "&lt;"sv},    std::pair{'>', "&gt;"sv},
                                  std::pair{'"', "&quot;"sv}, std::pair{'\'', "&apos;"sv}, std::pair{'\n', "&#10;"sv},
                                  std::pair{'\t', "&#9;"sv},  std::pair{'\r', "&#13;"sv}};

struct ParserReleaser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

// What is looked for, and what was found in the first tag of that name.
struct Search {
  std::string_view element;
  std::string_view attribute;
  bool met = false;
  std::optional<std::string> found{};
};

void lookAt(void* data, const char* name, const char** attributes) {
  auto& search = *static_cast<Search*>(data);
  if (search.met || search.element != name) return;
  search.met = true;
  for (; *attributes != nullptr; attributes += 2) {
    if (search.attribute == attributes[0]) search.found = attributes[1];
  }
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
  const std::unique_ptr<XML_ParserStruct, ParserReleaser> parser(XML_ParserCreate(nullptr));
  Search search{.element = element, .attribute = attribute};
  XML_SetUserData(parser.get(), &search);
  XML_SetStartElementHandler(parser.get(), lookAt);
  XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
  return search.found;
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
