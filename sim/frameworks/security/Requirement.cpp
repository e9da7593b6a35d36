#include "sim/frameworks/security/Requirement.h"

#include <functional>
#include <initializer_list>
#include <span>
#include <utility>
#include <vector>

#include "sim/frameworks/security/RequirementTokens.h"

namespace halvo::sim {
namespace {

using Condition = std::function<bool(const CodeSignature&)>;
using Kind = RequirementToken::Kind;

class CompiledRequirement : public Requirement {
 public:
  explicit CompiledRequirement(Condition condition) : condition_(std::move(condition)) {}
  bool isMetBy(const CodeSignature& signature) const override { return condition_(signature); }

 private:
  Condition condition_;
};

// Ad hoc signed code has no certificates: it meets no condition on a certificate or an anchor.
bool hasCertificates(const CodeSignature& signature) {
  return signature.anchor == "apple" || signature.anchor == "apple generic";
}

// Recursive descent. Each function takes what it understands from the front of the tokens; an empty condition means
// that it could not.
class Parser {
 public:
  explicit Parser(std::span<const RequirementToken> tokens) : rest_(tokens) {}

  Condition parseAll() {
    Condition condition = parseOr();
    return rest_.empty() ? condition : Condition();
  }

 private:
  // Deeper nesting than anybody writes; without a bound a long row of parentheses would exhaust the stack.
  static constexpr int kDeepest = 100;

  bool accept(Kind kind, std::string_view text) {
    if (rest_.empty() || rest_.front().kind != kind || rest_.front().text != text) return false;
    rest_ = rest_.subspan(1);
    return true;
  }

  bool acceptAll(std::initializer_list<std::pair<Kind, std::string_view>> tokens) {
    for (const auto& [kind, text] : tokens) {
      if (!accept(kind, text)) return false;
    }
    return true;
  }

  std::optional<std::string> takeValue() {
    if (rest_.empty() || rest_.front().kind == Kind::mark) return std::nullopt;
    std::string value = rest_.front().text;
    rest_ = rest_.subspan(1);
    return value;
  }

  Condition parseOr() {
    Condition left = parseAnd();
    while (left && accept(Kind::word, "or")) {
      Condition right = parseAnd();
      if (!right) return {};
      left = [left, right](const CodeSignature& signature) { return left(signature) || right(signature); };
    }
    return left;
  }

  Condition parseAnd() {
    Condition left = parsePrimary();
    while (left && accept(Kind::word, "and")) {
      Condition right = parsePrimary();
      if (!right) return {};
      left = [left, right](const CodeSignature& signature) { return left(signature) && right(signature); };
    }
    return left;
  }

  Condition parsePrimary() {
    if (++depth_ > kDeepest) return {};
    Condition condition = parseDeeper();
    --depth_;
    return condition;
  }

  Condition parseDeeper() {
    if (accept(Kind::mark, "!")) {
      const Condition inner = parsePrimary();
      return inner ? [inner](const CodeSignature& signature) { return !inner(signature); } : Condition();
    }
    if (accept(Kind::mark, "(")) {
      Condition inner = parseOr();
      return accept(Kind::mark, ")") ? inner : Condition();
    }
    if (accept(Kind::word, "identifier")) return parseIdentifier();
    if (accept(Kind::word, "anchor")) return parseAnchor();
    if (accept(Kind::word, "certificate")) return parseCertificate();
    return {};
  }

  Condition parseIdentifier() {
    accept(Kind::mark, "=");
    const auto value = takeValue();
    if (!value) return {};
    return [identifier = *value](const CodeSignature& signature) { return signature.identifier == identifier; };
  }

  Condition parseAnchor() {
    if (!accept(Kind::word, "apple")) return {};
    if (accept(Kind::word, "generic")) return hasCertificates;
    return [](const CodeSignature& signature) { return signature.anchor == "apple"; };
  }

  Condition parseCertificate() {
    const bool understood = acceptAll(
        {{Kind::word, "leaf"}, {Kind::mark, "["}, {Kind::word, "subject.OU"}, {Kind::mark, "]"}, {Kind::mark, "="}});
    const auto value = understood ? takeValue() : std::nullopt;
    if (!value) return {};
    return [team = *value](const CodeSignature& signature) {
      return hasCertificates(signature) && !signature.teamIdentifier.empty() && signature.teamIdentifier == team;
    };
  }

  std::span<const RequirementToken> rest_;
  int depth_ = 0;
};

}  // namespace

std::unique_ptr<const Requirement> compileRequirement(std::string_view text) {
  const auto tokens = splitRequirement(text);
  if (!tokens) return nullptr;
  Condition condition = Parser(*tokens).parseAll();
  return condition ? std::make_unique<const CompiledRequirement>(std::move(condition)) : nullptr;
}

}  // namespace halvo::sim
