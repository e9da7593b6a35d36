#include "HalvoHelper/testing/TreeSwapper.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

void touch(const std::string& path) { UniqueDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)); }

// Files that are to be removed before or after the victim, in whatever order the removal goes.
std::vector<std::string> makeFiles(const std::string& prefix) {
  constexpr int kFiles = 40;
  std::vector<std::string> made;
  for (int i = 0; i < kFiles; ++i) {
    made.push_back(prefix + std::to_string(i));
    touch(made.back());
  }
  return made;
}

bool swap(const std::string& victim, const std::string& aside, const std::string& outside) {
  return std::rename(victim.c_str(), aside.c_str()) == 0 && ::symlink(outside.c_str(), victim.c_str()) == 0;
}

// Runs `work` while another thread waits for the first of those files to go: by then the removal has seen the victim as
// a directory, and has most likely yet to come to it. Answers whether that one could swap it.
bool runAgainstSwap(const std::function<void()>& work, const std::vector<std::string>& watched,
                    const std::function<bool()>& swapVictim) {
  const auto stands = [](const std::string& path) { return ::access(path.c_str(), F_OK) == 0; };
  std::atomic<bool> waiting = false;
  std::atomic<bool> over = false;
  bool swapped = false;
  std::thread attacker([&] {
    waiting = true;
    while (!over && stands(watched.front()) && stands(watched.back())) continue;
    swapped = swapVictim();
  });
  while (!waiting) std::this_thread::yield();
  work();
  over = true;
  attacker.join();
  return swapped;
}

}  // namespace

SwapOutcome removeWhileSwapping(const TemporaryDirectory& directory, int swapsWanted,
                                const std::function<void(const std::string& tree)>& removeTree) {
  constexpr int kMostRounds = 10'000;
  const std::string outside = directory.makeDirectory("outside");
  const std::string canary = directory.makeFile("outside/file");
  SwapOutcome outcome;
  for (int round = 0; round < kMostRounds && outcome.swaps < swapsWanted; ++round) {
    const std::string tree = directory.makeDirectory("tree" + std::to_string(round));
    const std::string victim = tree + "/victim";
    std::vector<std::string> files = makeFiles(tree + "/before");
    ::mkdir(victim.c_str(), 0700);
    touch(victim + "/file");
    files.push_back(makeFiles(tree + "/after").back());

    const auto swapVictim = [&] { return swap(victim, directory.path("aside" + std::to_string(round)), outside); };
    if (runAgainstSwap([&] { removeTree(tree); }, files, swapVictim)) ++outcome.swaps;
    if (isNamed(canary)) continue;
    ++outcome.roundsThatReachedOutside;
    touch(canary);
  }
  return outcome;
}

void makeManyFiles(const std::string& directory, int count) {
  for (int i = 0; i < count; ++i) touch(directory + "/" + std::to_string(i));
}

}  // namespace halvo
