#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/soaking/guest/Verbs.h"

namespace halvo::soak {
namespace {

namespace fs = std::filesystem;

std::ptrdiff_t entriesIn(const fs::path& folder) {
  std::error_code error;
  return std::distance(fs::directory_iterator(folder, error), {});
}

std::string lineOf(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  return line;
}

// Of "total resident shared ..." in pages.
std::int64_t residentKilobytes(const fs::path& process) {
  std::ifstream in(process / "statm");
  std::int64_t total = 0;
  std::int64_t resident = 0;
  in >> total >> resident;
  return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

bool isZombie(const fs::path& process) {
  const std::string stat = lineOf(process / "stat");
  const std::size_t end = stat.rfind(')');
  return end == std::string::npos || end + 2 >= stat.size() || stat[end + 2] == 'Z';
}

}  // namespace

int census(const Arguments& /*arguments*/) {
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string number = entry.path().filename();
    if (std::isdigit(static_cast<unsigned char>(number.front())) == 0) continue;
    if (number == std::to_string(::getpid()) || isZombie(entry.path())) continue;
    std::cout << number << ' ' << lineOf(entry.path() / "comm") << ' ' << entriesIn(entry.path() / "fd") << ' '
              << entriesIn(entry.path() / "task") << ' ' << residentKilobytes(entry.path()) << '\n';
  }
  return 0;
}

}  // namespace halvo::soak
