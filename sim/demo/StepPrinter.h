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

class StepPrinter {
 public:
  enum class Detail { everything, verdicts };

  // Lines are folded at `width`; see Lines.h.
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
