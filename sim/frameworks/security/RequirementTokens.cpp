#include "sim/frameworks/security/RequirementTokens.h"

#include <algorithm>
#include <utility>

namespace halvo::sim {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kMarks = "()[]=!";
constexpr std::string_view kWordCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";

std::optional<RequirementToken> takeQuoted(std::string_view& text) {
  RequirementToken token{RequirementToken::Kind::quoted, ""};
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') {
      text.remove_prefix(i + 1);
      return token;
    }
    if (text[i] == '\\' && ++i == text.size()) return std::nullopt;
    token.text += text[i];
  }
  return std::nullopt;
}

std::optional<RequirementToken> take(std::string_view& text) {
  if (text.front() == '"') return takeQuoted(text);
  RequirementToken token{RequirementToken::Kind::mark, std::string(text.substr(0, 1))};
  if (kMarks.find(text.front()) == std::string_view::npos) {
    token = {RequirementToken::Kind::word, std::string(text.substr(0, text.find_first_not_of(kWordCharacters)))};
  }
  if (token.text.empty()) return std::nullopt;
  text.remove_prefix(token.text.size());
  return token;
}

}  // namespace

std::optional<std::vector<RequirementToken>> splitRequirement(std::string_view text) {
  std::vector<RequirementToken> tokens;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.empty()) return tokens;
    auto token = take(text);
    if (!token) return std::nullopt;
    tokens.push_back(std::move(*token));
  }
}

}  // namespace halvo::sim
