// What the demonstration prints: one block per step, with the request, the reply, the tools that ran and what changed
// on disk, and a table of all steps at the end; or, quietly, one line per step.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "sim/demo/Step.h"

namespace halvo::sim {

// No line is too long.
inline constexpr std::size_t kNoWidth = 0;

// What COLUMNS says, else what the terminal at the descriptor does. Without both there is nothing that would cut or
// fold a line: kNoWidth.
std::size_t widthOf(int descriptor, const char* columns);

// The text in lines of at most `width` code points: `first` before the first line, `rest` before the others. Broken at
// blanks, and inside a word where it alone is too long. A terminal narrower than a label and a few letters is taken for
// one that has room for them.
std::vector<std::string> folded(std::string_view first, std::string_view rest, std::string_view text,
                                std::size_t width);

class StepPrinter {
 public:
  enum class Detail { everything, verdicts };

  // Lines are folded at `width`.
  StepPrinter(std::ostream& out, Detail detail, std::size_t width);

  void print(const Step& step) const;

  // Prints the table. True when no step brought a surprise; otherwise says which did.
  bool conclude(const std::vector<Step>& steps) const;

 private:
  void block(const Step& step) const;
  void verdict(const Step& step) const;
  void list(std::string_view label, const std::vector<std::string>& lines) const;
  void line(std::string_view first, std::string_view text) const;

  std::ostream& out_;
  Detail detail_;
  std::size_t width_;
};

}  // namespace halvo::sim
