#include "sim/support/MachinePaths.h"

#include <utility>

namespace halvo::sim {
namespace {

struct Paths {
  std::filesystem::path state = "/sim";
  std::filesystem::path systemLog = "/var/log/system.log";
  std::filesystem::path machServices = "/var/run/mach";
};

Paths& current() {
  static Paths paths;
  return paths;
}

}  // namespace

std::filesystem::path stateRoot() { return current().state; }
void setStateRoot(std::filesystem::path root) { current().state = std::move(root); }

std::filesystem::path systemLogPath() { return current().systemLog; }
void setSystemLogPath(std::filesystem::path path) { current().systemLog = std::move(path); }

std::filesystem::path machServiceDirectory() { return current().machServices; }
void setMachServiceDirectory(std::filesystem::path directory) { current().machServices = std::move(directory); }

}  // namespace halvo::sim
