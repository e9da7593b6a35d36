// A tool started, its output captured: the helper's runner beside the least that has to be done, and what else there
// is.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>

#include "HalvoHelper/system/RealProcessRunner.h"
#include "bench/drivers/support/Driver.h"

extern char** environ;

namespace halvo::bench {
namespace {

constexpr std::size_t kChunk = 64UL * 1024;
const std::string kWriter = HALVO_BENCH_WRITER;

std::array<int, 2> closingPipe() {
  std::array<int, 2> ends{};
  require(::pipe(ends.data()) == 0, "no pipe");
  for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  return ends;
}

void readAndWait(const std::array<int, 2>& ends, pid_t child, std::size_t expected) {
  ::close(ends[1]);
  std::string text;
  std::vector<char> chunk(kChunk);
  for (ssize_t count = 0; (count = ::read(ends[0], chunk.data(), chunk.size())) > 0;) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  ::close(ends[0]);
  int status = 0;
  require(::waitpid(child, &status, 0) == child && status == 0, "the tool failed");
  require(text.size() == expected, "the output is cut short");
}

void ours(const Words& words) {
  const ProcessResult result = RealProcessRunner().run(kWriter, words);
  require(result.code == 0 && result.output.size() == std::stoul(words.at(0)), "the tool failed");
}

void plainSpawn(const Words& words) {
  const std::array<int, 2> ends = closingPipe();
  posix_spawn_file_actions_t actions{};
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  std::array<char*, 3> argv = {const_cast<char*>(kWriter.c_str()), const_cast<char*>(words.at(0).c_str()), nullptr};
  pid_t child = 0;
  require(::posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0, "the tool does not start");
  ::posix_spawn_file_actions_destroy(&actions);
  readAndWait(ends, child, std::stoul(words.at(0)));
}

void forkAndExec(const Words& words) {
  const std::array<int, 2> ends = closingPipe();
  const pid_t child = ::fork();
  require(child >= 0, "no fork");
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::execl(kWriter.c_str(), kWriter.c_str(), words.at(0).c_str(), nullptr);
    ::_exit(127);
  }
  readAndWait(ends, child, std::stoul(words.at(0)));
}

void throughShell(const Words& words) {
  std::FILE* stream = ::popen((kWriter + " " + words.at(0)).c_str(), "r");
  require(stream != nullptr, "no popen");
  std::string text;
  std::vector<char> chunk(kChunk);
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), stream)) text.append(chunk.data(), count);
  require(::pclose(stream) == 0 && text.size() == std::stoul(words.at(0)), "the tool failed");
}

// Makes this process larger by so many bytes, for good.
std::string ballast(const Words& words) {
  static std::string held;
  held.assign(std::stoul(words.at(0)), 'x');
  return std::to_string(held.size());
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"ours", timed(ours)},
                {"floor", timed(plainSpawn)},
                {"fork", timed(forkAndExec)},
                {"popen", timed(throughShell)},
                {"ballast", ballast}},
               argc, argv);
}
