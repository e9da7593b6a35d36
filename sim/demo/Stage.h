// Where the demonstration plays: a simulated Mac, and what one sees of it in each step.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sim/demo/StepReport.h"
#include "sim/scenario/ProductMachine.h"

namespace halvo::sim {

class Stage {
 public:
  // Starts the machine with its clock running twenty times as fast, so that a minute of idleness passes in seconds.
  explicit Stage(StepReport& report);

  ProductMachine& machine() { return machine_; }
  SimulatedMac& mac() { return machine_.mac(); }

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
