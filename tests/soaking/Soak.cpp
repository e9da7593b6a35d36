#include "tests/soaking/Soak.h"

#include <algorithm>
#include <iostream>
#include <sstream>

namespace halvo::soak {
namespace {

constexpr std::chrono::minutes kLongestRun(10);

std::string withoutLineFeed(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

void require(bool holds, const std::string& otherwise) {
  if (!holds) throw Violation(otherwise);
}

void tell(const std::string& line) { std::cout << "  " << line << std::endl; }

std::string outputOf(std::future<sim::CommandResult> result, const std::string& what) {
  require(result.wait_for(kLongestRun) == std::future_status::ready, what + " does not end");
  const sim::CommandResult ended = result.get();
  require(ended.status == 0, what + " ended with status " + std::to_string(ended.status) + ": " + ended.err);
  return withoutLineFeed(ended.out);
}

SoakMachine::SoakMachine()
    : good_(machine.signedCopy(HALVO_SOAK_GUEST, "halvo-guest", "com.halvo.app", "QX4TRM2ZL9")) {}

std::string SoakMachine::stranger(const std::string& name, const std::string& identifier, const std::string& team) {
  return machine.signedCopy(HALVO_SOAK_GUEST, name, identifier, team);
}

std::string SoakMachine::bulky() {
  constexpr std::uintmax_t kSize = 8 << 20;
  const std::filesystem::path large = mac().path("/private/var/tmp/large");
  std::filesystem::copy_file(HALVO_SOAK_GUEST, large);
  std::filesystem::resize_file(large, kSize);
  return machine.signedCopy(large, "bulky", "com.halvo.app", "QX4TRM2ZL9");
}

std::future<sim::CommandResult> SoakMachine::guestAsync(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {good_};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return mac().runAsync(machine.user(), command);
}

std::string SoakMachine::guest(const std::vector<std::string>& arguments) {
  return outputOf(guestAsync(arguments), arguments.front());
}

std::vector<ProcessFigures> SoakMachine::census() {
  std::vector<ProcessFigures> processes;
  std::istringstream lines(mac().run(0, {good_, "census"}).out);
  for (ProcessFigures one; lines >> one.pid >> one.name >> one.descriptors >> one.threads >> one.kilobytes;) {
    processes.push_back(one);
  }
  require(!processes.empty(), "the machine's processes cannot be counted");
  return processes;
}

ProcessFigures SoakMachine::figuresOf(const std::string& name) {
  const auto processes = census();
  const auto found = std::ranges::find(processes, name, &ProcessFigures::name);
  require(found != processes.end(), "no process called " + name + " runs");
  return *found;
}

std::string SoakMachine::reply(const std::vector<std::string>& arguments) {
  return withoutLineFeed(machine.app(arguments).out);
}

int SoakMachine::linesWith(const std::string& text) {
  return static_cast<int>(
      std::ranges::count_if(mac().systemLog(), [&](const std::string& line) { return line.find(text) != line.npos; }));
}

}  // namespace halvo::soak
