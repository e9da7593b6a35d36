// The removal of a tree, beside what else removes one. The trees are built first, each under a path of its own.
#include <filesystem>
#include <fstream>
#include <string>

#include "HalvoHelper/system/RemoveTree.h"
#include "bench/drivers/support/Command.h"

namespace halvo::bench {
namespace {

namespace fs = std::filesystem;

// build PATH FILES EACH: that many files, so many in each of its folders, which lie two deep as in a bundle.
std::string build(const Words& words) {
  const int files = std::stoi(words.at(1));
  const int each = std::stoi(words.at(2));
  for (int i = 0; i < files; ++i) {
    const fs::path folder = fs::path(words.at(0)) / "Contents" / std::to_string(i / each);
    if (i % each == 0) fs::create_directories(folder);
    std::ofstream(folder / ("file-" + std::to_string(i))) << "small\n";
  }
  return words.at(1);
}

// A verb "PATH...": the nanoseconds that the removal of all of them takes.
Verb removing(const std::function<void(const std::string& path)>& remove) {
  return [=](const Words& paths) {
    return std::to_string(nanosecondsOf([&] {
      for (const std::string& path : paths) remove(path);
    }));
  };
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive(
      {{"build", build},
       {"ours", removing([](const std::string& path) { require(halvo::halvoRemoveTree(path), path + " stays"); })},
       {"remove_all", removing([](const std::string& path) { fs::remove_all(path); })},
       {"rm", removing([](const std::string& path) {
          runCommand({"/bin/rm", "-rf", path});
        })}},
      argc, argv);
}
