// What the drivers of the soak share: how much they do, how they say what they do, and how they end.
#pragma once

#include <chrono>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/harness/ProductMachine.h"

namespace halvo::soak {

// Something that must never happen has happened. The text says what, and where.
class Violation : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void require(bool holds, const std::string& otherwise);

struct Plan {
  unsigned seed = 1;
  bool isShort = false;

  // The full number, or a part of it that a minute has room for.
  [[nodiscard]] int amount(int full, int shortened) const { return isShort ? shortened : full; }
};

// One line on standard output, at once.
void tell(const std::string& line);

// Processes of the machine, as the program inside sees them.
struct ProcessFigures {
  int pid = 0;
  std::string name;
  int descriptors = 0;
  int threads = 0;
  int kilobytes = 0;
};

// A simulated Mac with the clients of the soak in it.
class SoakMachine {
 public:
  // Signed as the application, in the user's downloads.
  SoakMachine();

  sim::ProductMachine machine;

  sim::Machine& mac() { return machine.mac(); }

  // Another copy of the program of clients, with the signature of somebody else.
  std::string stranger(const std::string& name, const std::string& identifier, const std::string& team);

  // Another copy with the application's signature and a size that takes a while to be judged.
  std::string bulky();

  // Runs a verb of the application's copy as the user. A violation when it ends with another status than 0.
  std::string guest(const std::vector<std::string>& arguments);
  std::future<sim::CommandResult> guestAsync(const std::vector<std::string>& arguments);

  std::vector<ProcessFigures> census();
  // Of the process with that name; a violation when there is none.
  ProcessFigures figuresOf(const std::string& name);

  // The application's reply, without the line feed.
  std::string reply(const std::vector<std::string>& arguments);

  // Whether it lies in the machine.
  bool stands(const std::string& path) { return std::filesystem::exists(mac().path(path)); }

  // How many lines of the system log hold this text.
  int linesWith(const std::string& text);

  [[nodiscard]] const std::string& good() const { return good_; }

 private:
  std::string good_;
};

// The verdict of a command that the soak started.
std::string outputOf(std::future<sim::CommandResult> result, const std::string& what);

void soakKills(const Plan& plan);
void soakIdle(const Plan& plan);
void soakClients(const Plan& plan);

}  // namespace halvo::soak
