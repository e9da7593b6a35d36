// What the demonstration prints: one block per step, with the request, the reply, the tools that ran and what changed
// on disk, and a table of all steps at the end.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "sim/harness/ProductMachine.h"

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

class Stage {
 public:
  // Starts the machine with its clock running twenty times as fast, so that a minute of idleness passes in seconds.
  explicit Stage(StepReport& report);

  ProductMachine& machine() { return machine_; }
  Machine& mac() { return machine_.mac(); }

  // A step begins: the tools that run and what changes on disk from here on are its own until it is told.
  Step begin(std::string title);
  void tell(Step step);

  // Makes a request through the application's program, notes it with its reply, and compares the reply with what is
  // expected.
  void request(Step& step, const std::vector<std::string>& arguments, const std::string& expectedReply);

  // The same with another program.
  void requestWith(Step& step, const std::vector<std::string>& command, const std::string& expectedReply);

  // Notes a surprise unless `holds`.
  static void expect(Step& step, bool holds, const std::string& surprise);

 private:
  ProductMachine machine_;
  StepReport& report_;
  std::size_t callsBefore_ = 0;
  TreeSnapshot treeBefore_;
};

}  // namespace halvo::sim
