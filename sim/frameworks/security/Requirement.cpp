#include "sim/frameworks/security/Requirement.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>

namespace halvo::sim {
namespace {

// Takes words, marks and quoted texts off the front of a text.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) { skipBlanks(); }

  bool atEnd() const { return rest_.empty(); }

  bool take(std::string_view token) {
    if (!rest_.starts_with(token)) return false;
    const std::string_view behind = rest_.substr(token.size());
    // No word ends where another character of a word follows.
    if (isWordCharacter(token.back()) && !behind.empty() && isWordCharacter(behind.front())) return false;
    rest_ = behind;
    skipBlanks();
    return true;
  }

  bool takeAll(std::initializer_list<std::string_view> tokens) {
    return std::ranges::all_of(tokens, [this](std::string_view token) { return take(token); });
  }

  // The text without its quotation marks; nothing when there is none or it has no end.
  std::optional<std::string> takeQuoted() {
    if (!rest_.starts_with('"')) return std::nullopt;
    std::string text;
    for (std::size_t i = 1; i < rest_.size(); ++i) {
      if (rest_[i] == '"') {
        rest_.remove_prefix(i + 1);
        skipBlanks();
        return text;
      }
      if (rest_[i] == '\\' && ++i == rest_.size()) return std::nullopt;
      text += rest_[i];
    }
    return std::nullopt;
  }

 private:
  static bool isWordCharacter(char character) {
    constexpr std::string_view kWord = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
    return kWord.find(character) != std::string_view::npos;
  }

  void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }

  std::string_view rest_;
};

// Ad hoc signed code has no certificates: it meets no condition on a certificate or an anchor.
bool hasCertificates(const CodeSignature& signature) {
  return signature.anchor == "apple" || signature.anchor == "apple generic";
}

Requirement takeCondition(Reader& reader) {
  if (reader.take("identifier")) {
    const auto value = reader.takeQuoted();
    if (!value) return {};
    return [identifier = *value](const CodeSignature& signature) { return signature.identifier == identifier; };
  }
  if (reader.take("anchor")) return reader.takeAll({"apple", "generic"}) ? hasCertificates : Requirement();
  const bool understood = reader.takeAll({"certificate", "leaf", "[", "subject.OU", "]", "="});
  const auto value = understood ? reader.takeQuoted() : std::nullopt;
  if (!value) return {};
  return [team = *value](const CodeSignature& signature) {
    return hasCertificates(signature) && !signature.teamIdentifier.empty() && signature.teamIdentifier == team;
  };
}

}  // namespace

Requirement compileRequirement(std::string_view text) {
  Reader reader(text);
  Requirement all = takeCondition(reader);
  while (all && reader.take("and")) {
    const Requirement next = takeCondition(reader);
    if (!next) return {};
    all = [all, next](const CodeSignature& signature) { return all(signature) && next(signature); };
  }
  return reader.atEnd() ? all : Requirement();
}

}  // namespace halvo::sim
