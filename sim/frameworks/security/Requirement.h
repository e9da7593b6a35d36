// The requirement language of code signing, as far as this system uses it:
//   identifier "x", anchor apple, anchor apple generic, certificate leaf[subject.OU] = "T",
//   and, or, ! and parentheses, in which ! binds tightest and or loosest.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "sim/support/CodeSignature.h"

namespace halvo::sim {

// One condition. Immutable, so any thread may ask.
class Requirement {
 public:
  Requirement() = default;
  Requirement(const Requirement&) = delete;
  Requirement& operator=(const Requirement&) = delete;
  virtual ~Requirement() = default;
  virtual bool isMetBy(const CodeSignature& signature) const = 0;
};

// Null when `text` is not in the language.
std::unique_ptr<const Requirement> compileRequirement(std::string_view text);

}  // namespace halvo::sim
