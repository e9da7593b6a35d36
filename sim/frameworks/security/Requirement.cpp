#include "sim/frameworks/security/Requirement.h"

#include <algorithm>
#include <initializer_list>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>

namespace halvo::sim {
namespace {

bool takeAll(std::istream& text, std::initializer_list<std::string_view> words) {
  return std::ranges::all_of(words, [&text](std::string_view expected) {
    std::string word;
    return text >> word && word == expected;
  });
}

// The text without its quotation marks; nothing when there is none or it has no end.
std::optional<std::string> takeQuoted(std::istream& text) {
  std::string value;
  const bool isQuoted = (text >> std::ws).peek() == '"';
  return isQuoted && text >> std::quoted(value) ? std::optional(value) : std::nullopt;
}

// Ad hoc signed code has no certificates: it meets no condition on a certificate or an anchor.
bool hasCertificates(const CodeSignature& signature) {
  return signature.anchor == "apple" || signature.anchor == "apple generic";
}

Requirement takeCondition(std::istream& text) {
  std::string kind;
  text >> kind;
  if (kind == "anchor") return takeAll(text, {"apple", "generic"}) ? hasCertificates : Requirement();
  const bool understood = kind == "identifier" || (kind == "certificate" && takeAll(text, {"leaf[subject.OU]", "="}));
  const auto value = understood ? takeQuoted(text) : std::nullopt;
  if (!value) return {};
  if (kind == "identifier") {
    return [identifier = *value](const CodeSignature& signature) { return signature.identifier == identifier; };
  }
  return [team = *value](const CodeSignature& signature) {
    return hasCertificates(signature) && !signature.teamIdentifier.empty() && signature.teamIdentifier == team;
  };
}

}  // namespace

Requirement compileRequirement(std::string_view source) {
  std::istringstream text{std::string(source)};
  Requirement all = takeCondition(text);
  for (std::string word; all && text >> word;) {
    const Requirement next = word == "and" ? takeCondition(text) : Requirement();
    if (!next) return {};
    all = [all, next](const CodeSignature& signature) { return all(signature) && next(signature); };
  }
  return all;
}

}  // namespace halvo::sim
