// Copies: a package into staging, beside a plain loop; a tree into a snapshot.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>

#include "HalvoHelper/system/RealPrivilegedFS.h"
#include "HalvoHelper/system/UniqueDescriptor.h"
#include "bench/drivers/support/Command.h"

namespace halvo::bench {
namespace {

// Every verb takes the source and then the destination, which is gone before each run.
void removeDestination(const Words& words) { std::filesystem::remove_all(words.back()); }

void stage(const Words& words) { require(RealPrivilegedFS().stageFile(words.at(0), words.at(1)), "not staged"); }

void loop(const Words& words) {
  constexpr std::size_t kBytes = 1'048'576;
  const UniqueDescriptor from(::open(words.at(0).c_str(), O_RDONLY | O_CLOEXEC));
  const UniqueDescriptor to(::open(words.at(1).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  const std::unique_ptr<char[]> buffer(new char[kBytes]);
  for (ssize_t count = 0; (count = ::read(from.get(), buffer.get(), kBytes)) > 0;) {
    require(::write(to.get(), buffer.get(), static_cast<std::size_t>(count)) == count, "not written");
  }
}

void copyTree(const Words& words) { require(RealPrivilegedFS().copyTree(words.at(0), words.at(1)), "not copied"); }

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"ours", timed(stage, removeDestination)},
                {"loop", timed(loop, removeDestination)},
                {"tree", timed(copyTree, removeDestination)},
                {"command", timed(runCommand, removeDestination)}},
               argc, argv);
}
