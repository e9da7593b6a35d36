// Installs on a machine on a small disk of its own, on which only so much is free. The installer replaces every part
// and fails. Prints the result and what is left of the four parts, such as "rolled_back: old old new -".
#include <sys/statvfs.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "HalvoHelper/testing/InstallMachine.h"

namespace {

constexpr std::uintmax_t kKiB = 1024;

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

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() != 3 || (words[2] != "spare" && words[2] != "crowded")) {
    std::cerr << "usage: DISK KIB-FREE spare|crowded (whether the installer leaves anything free)\n";
    return EXIT_FAILURE;
  }
  const std::string& disk = words[0];
  halvo::InstallMachine machine(std::make_shared<halvo::DiskTree>(disk), contents("old", 120),
                                contents("package", 351));
  machine.newContents = contents("new", 4);
  machine.installerStatus = 1;
  if (words[2] == "crowded") {
    machine.installerAlso = [&] { std::ofstream(disk + "/leftover") << std::string(freeKiB(disk) * kKiB, 'l'); };
  }
  fillUpTo(disk, std::stoull(words[1]));

  const bool rolledBack = std::holds_alternative<halvo::InstallRolledBack>(machine.install());
  std::cout << (rolledBack ? "rolled_back: " : "another result: ") << machine.parts();
  return EXIT_SUCCESS;
}
