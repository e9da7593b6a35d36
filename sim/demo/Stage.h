// Where the walk takes place: a simulated Mac, and the notes that are taken of each step.
#pragma once

#include <cstddef>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "sim/demo/Step.h"
#include "sim/harness/ProductMachine.h"

namespace halvo::sim {

class Stage {
 public:
  using Listener = std::function<void(Step)>;

  // Starts the machine with its clock running twenty times as fast, so that a minute of idleness passes in seconds.
  // `tell` is handed every step that is over.
  explicit Stage(Listener tell);

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

  // A step that is one request through the application's program.
  void requestStep(std::string title, const std::vector<std::string>& arguments, const std::string& expectedReply);

  // The two halves of a request, for what happens in between.
  struct Pending {
    std::size_t request;  // its place in the step
    std::size_t logged;   // how many lines the system log had
    std::future<CommandResult> result;
  };
  Pending send(Step& step, const std::vector<std::string>& command);
  void receive(Step& step, Pending pending, const std::string& expectedReply);

  // Waits for `condition`, half a minute at most, notes how long that took and why, and a surprise if it never held.
  static void await(Step& step, const std::string& reason, const std::function<bool()>& condition,
                    const std::string& surprise);

  // Notes a surprise unless `holds`.
  static void expect(Step& step, bool holds, const std::string& surprise);

 private:
  [[nodiscard]] TreeSnapshot tree() const;

  ProductMachine machine_;
  Listener tell_;
  std::size_t callsBefore_ = 0;
};

}  // namespace halvo::sim
