#include "sim/demo/StepReport.h"

#include <iomanip>

namespace halvo::sim {
namespace {

constexpr int kLabelWidth = 10;

}  // namespace

StepReport::StepReport(std::ostream& out) : out_(out) {}

void StepReport::tell(const Step& step) {
  told_.push_back(step);
  out_ << "\n== " << told_.size() << ". " << step.title << "\n";
  list("request", step.requests);
  list("reply", step.replies);
  list("tools", step.tools);
  list("on disk", step.changes);
  list("note", step.remarks);
  list("SURPRISE", step.surprises);
  out_ << std::flush;
}

bool StepReport::conclude() const {
  out_ << "\n== Summary\n";
  bool asExpected = true;
  for (std::size_t i = 0; i < told_.size(); ++i) {
    const bool fine = told_[i].surprises.empty();
    asExpected = asExpected && fine;
    out_ << std::setw(4) << i + 1 << "  " << (fine ? "as expected" : "DIFFERENT  ") << "  " << told_[i].title << "\n";
  }
  if (asExpected) {
    out_ << "\nAll " << told_.size() << " steps went as expected.\n";
    return true;
  }
  for (const Step& step : told_) {
    for (const std::string& surprise : step.surprises) out_ << "\nDifferent in \"" << step.title << "\": " << surprise;
  }
  out_ << "\n";
  return false;
}

void StepReport::list(std::string_view label, const std::vector<std::string>& lines) const {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    out_ << "  " << std::left << std::setw(kLabelWidth) << (i == 0 ? label : "") << lines[i] << "\n" << std::right;
  }
}

}  // namespace halvo::sim
