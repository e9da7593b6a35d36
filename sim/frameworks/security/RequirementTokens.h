// Splits requirement text into words, quoted texts and single marks.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

struct RequirementToken {
  enum class Kind { word, quoted, mark };
  Kind kind;
  std::string text;  // without the quotation marks
};

// Nothing when a character does not belong to the language or a quoted text has no end.
std::optional<std::vector<RequirementToken>> splitRequirement(std::string_view text);

}  // namespace halvo::sim
