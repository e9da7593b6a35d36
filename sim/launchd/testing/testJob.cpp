// The job that launchd's tests load: does what its first argument says.
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sim/launchd/ControlClient.h"
#include "sim/support/Files.h"

namespace {

using halvo::sim::ControlClient;
using halvo::sim::replaceFile;

constexpr int kFirstSocket = 3;
constexpr int kQuitStatus = 7;

[[noreturn]] void waitForEver() {
  while (true) ::pause();
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::vector<int> openDescriptors() {
  std::vector<int> open;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    struct stat unused {};
    if (::fstat(descriptor, &unused) == 0) open.push_back(descriptor);
  }
  return open;
}

// What a job can see of how it was started.
nlohmann::json description() {
  const std::vector<int> descriptors = openDescriptors();
  const mode_t mask = ::umask(0);
  ::umask(mask);
  sigset_t blocked{};
  ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
  return {{"pid", ::getpid()},
          {"user", ::getuid()},
          {"leads_group", ::getpgrp() == ::getpid()},
          {"folder", std::filesystem::current_path().string()},
          {"umask", mask},
          {"blocks_signals", sigismember(&blocked, SIGTERM) == 1 || sigismember(&blocked, SIGCHLD) == 1},
          {"descriptors", descriptors},
          {"path", variable("PATH")},
          {"home", variable("HOME")},
          {"listen_fds", variable("LISTEN_FDS")},
          {"listen_pid", variable("LISTEN_PID")},
          {"listen_names", variable("LISTEN_FDNAMES")}};
}

// Tells every client about itself; ends when a client says "q".
int serve() {
  const std::string about = description().dump() + "\n";
  while (true) {
    const int client = ::accept(kFirstSocket, nullptr, nullptr);
    if (client < 0) continue;
    char word = 0;
    const bool quit = ::recv(client, &word, 1, 0) == 1 && word == 'q';
    ::send(client, about.data(), about.size(), MSG_NOSIGNAL);
    ::close(client);
    if (quit) return kQuitStatus;
  }
}

// A child in the job's own process group outlives the job, unless launchd ends it.
int leaveChild(const std::string& file) {
  const pid_t child = ::fork();
  if (child == 0) waitForEver();
  static_cast<void>(replaceFile(file, std::to_string(child)));
  return 0;
}

// As the helper does at its very end: a child in another process group asks launchd to end this job.
int bootOutMyself(const std::string& socket, const std::string& job, const std::string& file) {
  if (::fork() == 0) {
    ::setpgid(0, 0);
    static_cast<void>(replaceFile(file, std::to_string(ControlClient(socket).bootout(job).status)));
    return 0;
  }
  waitForEver();
}

int stubborn(const std::string& file) {
  ::signal(SIGTERM, SIG_IGN);
  static_cast<void>(replaceFile(file, "deaf"));
  waitForEver();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.at(0) == "serve") return serve();
  if (words.at(0) == "leave-child") return leaveChild(words.at(1));
  if (words.at(0) == "bootout-myself") return bootOutMyself(words.at(1), words.at(2), words.at(3));
  if (words.at(0) == "stubborn") return stubborn(words.at(1));
  waitForEver();
}
