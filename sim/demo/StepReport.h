// What the demonstration prints: one block per step, with the request, the reply, the tools that ran and what changed
// on disk, and a table of all steps at the end.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// What happened in one step, and what should have.
struct Step {
  std::string title;
  std::vector<std::string> requests;   // command lines, as a person would type them
  std::vector<std::string> replies;    // what they printed
  std::vector<std::string> tools;      // the system tools that ran meanwhile, with their exit statuses
  std::vector<std::string> changes;    // what is different on disk
  std::vector<std::string> remarks;    // anything else worth seeing, such as log lines
  std::vector<std::string> surprises;  // what differs from what is expected; none when all is well
};

class StepReport {
 public:
  explicit StepReport(std::ostream& out);

  void tell(const Step& step);

  // Prints the table. True when no step brought a surprise; otherwise says which did.
  bool conclude() const;

 private:
  void list(std::string_view label, const std::vector<std::string>& lines) const;

  std::ostream& out_;
  std::vector<Step> told_;
};

}  // namespace halvo::sim
