#include "sim/support/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace halvo::sim {
namespace {

constexpr int kSignalBase = 128;

class Actions {
 public:
  Actions() { ::posix_spawn_file_actions_init(&actions_); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  ~Actions() { ::posix_spawn_file_actions_destroy(&actions_); }
  posix_spawn_file_actions_t* get() { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

}  // namespace

std::optional<pid_t> startChild(std::vector<std::string> argv, const ChildStreams& streams,
                                const std::filesystem::path& folder) {
  Actions actions;
  if (!folder.empty()) ::posix_spawn_file_actions_addchdir_np(actions.get(), folder.c_str());
  ::posix_spawn_file_actions_adddup2(actions.get(), streams.in, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(actions.get(), streams.out, STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(actions.get(), streams.err, STDERR_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(actions.get(), STDERR_FILENO + 1);
  std::vector<std::string> environment = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin"};
  if (const char* terminal = std::getenv("TERM")) environment.push_back(std::string("TERM=") + terminal);
  pid_t child = 0;
  const int error = ::posix_spawnp(&child, argv[0].c_str(), actions.get(), nullptr, argumentPointers(argv).data(),
                                   argumentPointers(environment).data());
  return error == 0 ? std::optional(child) : std::nullopt;
}

int collectChild(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return exitStatusOf(status);
}

int exitStatusOf(int waitStatus) {
  return WIFSIGNALED(waitStatus) ? kSignalBase + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

std::vector<char*> argumentPointers(std::vector<std::string>& words) {
  std::vector<char*> list;
  for (std::string& word : words) list.push_back(word.data());
  list.push_back(nullptr);
  return list;
}

CommandResult runChild(const std::vector<std::string>& argv) {
  const UniqueDescriptor in = namelessFile();
  const UniqueDescriptor out = namelessFile();
  const UniqueDescriptor err = namelessFile();
  const auto child = startChild(argv, {in.get(), out.get(), err.get()});
  if (!child) return {.status = kProgramMissing, .out = {}, .err = {}};
  const int status = collectChild(*child);
  return {.status = status, .out = contentOf(out), .err = contentOf(err)};
}

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "no pipe");
  return {UniqueDescriptor(ends[0]), UniqueDescriptor(ends[1])};
}

UniqueDescriptor namelessFile(std::string_view content) {
  UniqueDescriptor file(::memfd_create("stream", MFD_CLOEXEC));
  while (file.valid() && !content.empty()) {
    const ssize_t count = ::write(file.get(), content.data(), content.size());
    if (count < 0 && errno != EINTR) return {};
    if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
  }
  if (file.valid()) ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

std::string contentOf(const UniqueDescriptor& file) {
  std::string text;
  std::array<char, 4096> chunk{};
  ssize_t count = 0;
  while ((count = ::pread(file.get(), chunk.data(), chunk.size(), static_cast<off_t>(text.size()))) > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace halvo::sim
