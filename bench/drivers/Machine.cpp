// The whole product in the simulated Mac: an install, the list of users, and what a helper that waits costs.
#include <sstream>
#include <string>
#include <thread>

#include "bench/drivers/support/Driver.h"
#include "sim/harness/ProductMachine.h"

namespace halvo::bench {
namespace {

using sim::CommandResult;
using sim::ProductMachine;

constexpr unsigned kRoot = 0;
constexpr const char* kToolScript = "/private/var/tmp/tools.sh";

std::string outputOf(const CommandResult& result) {
  require(result.status == 0, "status " + std::to_string(result.status) + ": " + result.out + result.err);
  return result.out;
}

// One machine for the whole run of the driver.
class Mac {
 public:
  // The package lies where the helper may read it: the client that is connected already makes no copy.
  explicit Mac(const std::string& clockRate) : package_(machine_.package({.folder = ProductMachine::kHome})) {
    mac().writeState("clock-rate", clockRate + "\n");
    guest_ = machine_.signedCopy(HALVO_BENCH_GUEST, "guest", "com.halvo.app", "QX4TRM2ZL9");
    mac().start();
    // The first install finds an empty machine and is another one than those that follow.
    install();
    const std::size_t before = mac().calls().size();
    install();
    writeToolScript(before);
  }

  sim::Machine& mac() { return machine_.mac(); }

  void install() { outputOf(machine_.app(ProductMachine::install(package_))); }

  // The same from a client that is connected already: the nanoseconds from its request to the reply.
  std::string installRequest() { return guest({"install", "1", package_.path, R"({"driver_version":"1.2.0"})"}); }

  void ping() { outputOf(machine_.app({"ping"})); }

  // What the client inside answers, without its line feed.
  std::string guest(const Words& words) {
    Words command = {guest_};
    command.insert(command.end(), words.begin(), words.end());
    std::string figures = outputOf(mac().runAsync(machine_.user(), command).get());
    figures.pop_back();
    return figures;
  }

  std::string shell(const std::string& script) { return outputOf(mac().run(kRoot, {"/bin/sh", "-c", script})); }

  std::string helper() {
    ping();
    return std::to_string(machine_.helperProcess().value_or(0));
  }

  void waitForExit() {
    while (machine_.helperProcess()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }

 private:
  // The same tools with the same arguments, and a copy of the package where the helper stages it.
  void writeToolScript(std::size_t before) {
    const std::string staged = "/var/db/halvo/install-staging/incoming.pkg";
    std::string script = "mkdir -p /var/db/halvo/install-staging\ncp " + package_.path + " " + staged + "\n";
    const auto calls = mac().calls();
    for (std::size_t i = before; i < calls.size(); ++i) {
      script += calls[i].tool;
      for (const std::string& argument : calls[i].arguments) script += " " + argument;
      script += "\n";
    }
    mac().writeFile(kToolScript, script + "rm " + staged + "\n");
  }

  ProductMachine machine_;
  sim::PackageFiles package_;
  std::string guest_;
};

Mac& theMac() {
  static Mac mac("1");
  return mac;
}

// Another one, whose clock runs fast enough for an idle exit after a fraction of a second.
Mac& hurriedMac() {
  static Mac mac("400");
  return mac;
}

// The accounts of the machine: the system's own, and as many ordinary ones as the first word says.
void makeAccounts(const Words& words) {
  std::string users = "root 0\ndaemon 1\n_www 70\nnobody -2\n";
  for (int i = 0; i < std::stoi(words.at(0)); ++i) {
    users += "user" + std::to_string(501 + i) + " " + std::to_string(501 + i) + "\n";
  }
  if (theMac().mac().readState("users") != users) theMac().mac().writeState("users", users);
}

// users TIMES ACCOUNTS: the nanoseconds of so many requests for the list, from a client that is connected already.
std::string users(const Words& words) {
  makeAccounts({words.at(1)});
  return theMac().guest({"users", words.at(0)});
}

void askEachAccount(const Words& words) {
  theMac().shell("/usr/bin/dscl . -list /Users UniqueID >/dev/null; id=501; while [ $id -lt " +
                 std::to_string(501 + std::stoi(words.at(0))) +
                 " ]; do /bin/launchctl print gui/$id >/dev/null 2>&1; id=$((id + 1)); done");
}

void runTools(const Words& /*words*/) { theMac().mac().run(kRoot, {"/bin/sh", kToolScript}); }

// The numbers behind the lines of `text` that begin with that word, added up.
std::int64_t sumOf(const std::string& text, const std::string& word) {
  std::istringstream in(text);
  std::int64_t sum = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(word)) sum += std::stoll(line.substr(line.find(':') + 1));
  }
  return sum;
}

std::int64_t wakeUps(const std::string& process) {
  return sumOf(theMac().shell("cat /proc/" + process + "/task/*/status"), "voluntary_ctxt_switches");
}

// Private kilobytes, threads and descriptors of a process, which the shell may have to start first.
std::string memoryThreadsDescriptors(const std::string& process, const std::string& beginning = {}) {
  const std::string proc = "/proc/" + process;
  const std::string text = theMac().shell(beginning + "cat " + proc + "/smaps_rollup " + proc + "/status; set -- " +
                                          proc + "/fd/*; echo Descriptors: $#");
  return std::to_string(sumOf(text, "Private_")) + " " + std::to_string(sumOf(text, "Threads")) + " " +
         std::to_string(sumOf(text, "Descriptors"));
}

// idle SECONDS: private kilobytes, threads and descriptors of the helper, and how often it woke up meanwhile.
std::string idle(const Words& words) {
  const std::string process = theMac().helper();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  const std::int64_t before = wakeUps(process);
  std::this_thread::sleep_for(std::chrono::seconds(std::stoi(words.at(0))));
  const std::int64_t after = wakeUps(process);
  return memoryThreadsDescriptors(process) + " " + std::to_string(after - before);
}

// The same three of a program that only waits.
std::string minimal(const Words& /*words*/) {
  return memoryThreadsDescriptors("$!", "sleep 1 >/dev/null 2>&1 & sleep 0.2; ");
}

std::string viaGuest(const Words& words) { return theMac().guest(words); }

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive(
      {{"install", [](const Words&) { return theMac().installRequest(); }},
       {"install-tools", timed(runTools)},
       {"users", users},
       {"users-tools", timed(askEachAccount, makeAccounts)},
       {"idle", idle},
       {"minimal", minimal},
       {"first-reply",
        timed([](const Words&) { hurriedMac().ping(); }, [](const Words&) { hurriedMac().waitForExit(); })},
       {"later-reply", timed([](const Words&) { hurriedMac().ping(); }, [](const Words&) { hurriedMac().ping(); })},
       {"guest", viaGuest}},
      argc, argv);
}
