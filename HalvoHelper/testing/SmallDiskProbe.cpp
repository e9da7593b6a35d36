// Installs on a small disk of its own, which is full or becomes read-only, with an installer that fails. Prints one
// line for each level to which the disk is filled, or for each call before which it becomes read-only: "staging_failed:
// old old old old; saved - - - -; log: REFUSED: could not stage".
#include <sys/mount.h>
#include <sys/statvfs.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "HalvoHelper/testing/Faults.h"
#include "HalvoHelper/testing/InstallMachine.h"

namespace {

constexpr std::uintmax_t kKiB = 1024;
constexpr std::uintmax_t kHighestLevel = 1200;
constexpr std::uintmax_t kStep = 25;

using Prepare = std::function<void(halvo::InstallMachine&, const std::string& root)>;

// So many bytes that begin with a line of their own.
std::string contents(const std::string& firstLine, std::uintmax_t kib) {
  std::string text = firstLine + "\n";
  text.resize(kib * kKiB, firstLine.front());
  return text;
}

std::uintmax_t freeKiB(const std::string& disk) {
  struct statvfs info {};
  if (::statvfs(disk.c_str(), &info) != 0) std::exit(EXIT_FAILURE);
  return info.f_bavail * info.f_frsize / kKiB;
}

void fillUpTo(const std::string& disk, std::uintmax_t kibLeft) {
  if (freeKiB(disk) < kibLeft) std::exit(EXIT_FAILURE);
  std::ofstream(disk + "/ballast", std::ios::binary) << std::string((freeKiB(disk) - kibLeft) * kKiB, 'b');
}

void remount(const std::string& disk, unsigned long flags) {
  if (::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | flags, nullptr) != 0) std::exit(EXIT_FAILURE);
}

// The line of the log that says how it ended, without what is different each time.
std::string lastWord(const halvo::InstallMachine& machine) {
  const std::string line = machine.log.empty() ? "" : machine.log.back();
  return line.substr(0, line.find(" /"));
}

// One install on an empty disk. Whatever became of the disk is undone afterwards.
void installOnce(const std::string& disk, const Prepare& prepare) {
  const std::string root = disk + "/mac";
  halvo::InstallMachine machine(std::make_shared<halvo::DiskTree>(root), contents("old", 120),
                                contents("package", 351));
  machine.installerStatus = 1;
  prepare(machine, root);
  const halvo::InstallResult result = machine.install();
  remount(disk, 0);
  const bool rolledBack = std::holds_alternative<halvo::InstallRolledBack>(result);
  std::cout << (rolledBack ? "rolled_back: " : halvoInstallResultJSON(result) + ": ") << machine.parts() << "; saved "
            << machine.snapshot(machine.now) << "; log: " << lastWord(machine) << '\n';
  for (const char* name : {"/mac", "/ballast", "/leftover"}) halvo::RealPrivilegedFS().removeTree(disk + name);
}

void fill(const std::string& disk, std::uintmax_t newKiB, bool crowded) {
  for (std::uintmax_t level = 0; level <= kHighestLevel; level += kStep) {
    installOnce(disk, [&](halvo::InstallMachine& machine, const std::string&) {
      machine.newContents = contents("new", newKiB);
      if (crowded) {
        machine.installerAlso = [=] { std::ofstream(disk + "/leftover") << std::string(freeKiB(disk) * kKiB, 'l'); };
      }
      fillUpTo(disk, level);
    });
  }
}

// Answers how many calls there were.
std::size_t installReadOnlyFrom(const std::string& disk, std::size_t call) {
  const auto script = std::make_shared<halvo::FaultScript>();
  script->before = [&](const halvo::Call&) {
    if (script->calls.size() == call) remount(disk, MS_RDONLY);
  };
  installOnce(disk, [&](halvo::InstallMachine& machine, const std::string& root) {
    const auto tree = std::make_shared<halvo::DiskTree>(root);
    const auto whole = [](const std::function<void()>& act) { act(); };
    machine.aroundFiles = [=](const auto&) { return std::make_shared<halvo::FaultyPrivilegedFS>(tree, script); };
    machine.aroundTools = [=](const auto& tools) {
      return std::make_shared<halvo::FaultyProcessRunner>(tools, script, whole);
    };
  });
  return script->calls.size();
}

// From no call on, from each one on, and in the middle of the installer.
void readOnly(const std::string& disk) {
  const std::size_t calls = installReadOnlyFrom(disk, std::numeric_limits<std::size_t>::max());
  for (std::size_t call = 0; call < calls; ++call) installReadOnlyFrom(disk, call);
  installOnce(disk, [&](halvo::InstallMachine& machine, const std::string&) {
    machine.installedParts = 2;
    machine.installerAlso = [=] { remount(disk, MS_RDONLY); };
  });
}

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const std::map<std::string, std::function<void(const std::string&)>> ways = {
      {"spare", [](const std::string& disk) { fill(disk, 4, false); }},
      {"crowded", [](const std::string& disk) { fill(disk, 4, true); }},
      {"large", [](const std::string& disk) { fill(disk, 240, false); }},
      {"read-only", readOnly}};
  if (words.size() != 2 || !ways.contains(words[1])) {
    std::cerr << "usage: DISK spare|crowded|large|read-only (what the installer leaves room for, or brings)\n";
    return EXIT_FAILURE;
  }
  ways.at(words[1])(words[0]);
  return EXIT_SUCCESS;
}
