// Runs one operation of the real file system in a process of its own, so that a test can give it a machine with less
// disk or other mounts, and can see how much memory it took. Prints "true" or "false", or a number.
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "HalvoHelper/system/RealPrivilegedFS.h"

namespace {

// Files past this size cannot be written, as on a disk that is full there.
void limitFileSize(const std::string& bytes) {
  const rlim_t most = std::stoull(bytes);
  const rlimit limit{most, most};
  std::signal(SIGXFSZ, SIG_IGN);
  if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) std::exit(EXIT_FAILURE);
}

const char* word(bool answer) { return answer ? "true" : "false"; }

}  // namespace

int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  const halvo::RealPrivilegedFS fs;
  const std::string operation = words.empty() ? "" : words[0];
  if (operation == "remove-tree" && words.size() == 2) {
    std::cout << word(fs.removeTree(words[1]));
  } else if (operation == "copy-tree-limited" && words.size() == 4) {
    limitFileSize(words[1]);
    std::cout << word(fs.copyTree(words[2], words[3]));
  } else if (operation == "stage-file" && words.size() == 3) {
    std::cout << word(fs.stageFile(words[1], words[2]));
  } else if (operation == "stage-file-limited" && words.size() == 4) {
    limitFileSize(words[1]);
    std::cout << word(fs.stageFile(words[2], words[3]));
  } else if (operation == "stage-file-memory" && words.size() == 3) {
    const bool staged = fs.stageFile(words[1], words[2]);
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::cout << (staged ? usage.ru_maxrss : -1);
  } else {
    std::cerr << "usage: remove-tree PATH | copy-tree-limited BYTES FROM TO | stage-file FROM TO | stage-file-limited "
                 "BYTES FROM TO | "
                 "stage-file-memory FROM TO\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
