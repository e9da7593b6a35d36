#include "HalvoHelper/testing/TreeSwapper.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

void touch(const std::string& path) { UniqueDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)); }

class Swapper {
 public:
  Swapper(std::string victim, std::string aside, std::string outside)
      : victim_(std::move(victim)),
        aside_(std::move(aside)),
        outside_(std::move(outside)),
        thread_([this] { work(); }) {}
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;
  ~Swapper() { finish(); }

  int finish() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    return swaps_;
  }

 private:
  void work() {
    while (!stop_) {
      std::rename(victim_.c_str(), aside_.c_str());
      if (::symlink(outside_.c_str(), victim_.c_str()) == 0) ++swaps_;
      ::unlink(victim_.c_str());
      std::rename(aside_.c_str(), victim_.c_str());
    }
  }

  std::string victim_;
  std::string aside_;
  std::string outside_;
  std::atomic<bool> stop_ = false;
  std::atomic<int> swaps_ = 0;
  std::thread thread_;
};

}  // namespace

SwapOutcome removeWhileSwapping(const TemporaryDirectory& directory, int rounds, std::chrono::seconds longest,
                                const std::function<void(const std::string& tree)>& removeTree) {
  const std::string outside = directory.makeDirectory("outside");
  const std::string canary = directory.makeFile("outside/file");
  const std::string tree = directory.path("tree");
  const std::string victim = tree + "/victim";
  Swapper swapper(victim, directory.path("aside"), outside);

  SwapOutcome outcome;
  const auto deadline = std::chrono::steady_clock::now() + longest;
  for (int round = 0; round < rounds && std::chrono::steady_clock::now() < deadline; ++round) {
    ::mkdir(tree.c_str(), 0700);
    ::mkdir(victim.c_str(), 0700);
    touch(victim + "/file");
    removeTree(tree);
    if (isNamed(canary)) continue;
    ++outcome.roundsThatReachedOutside;
    touch(canary);
  }
  outcome.swaps = swapper.finish();
  return outcome;
}

void makeManyFiles(const std::string& directory, int count) {
  for (int i = 0; i < count; ++i) touch(directory + "/" + std::to_string(i));
}

}  // namespace halvo
