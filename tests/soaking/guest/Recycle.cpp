// A process number that passes from a stranger to the application before the helper looks.
#include <linux/sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>

#include "tests/soaking/guest/Strangers.h"
#include "tests/soaking/guest/Verbs.h"

namespace halvo::soak {
namespace {

// A child with this process number, or -1.
pid_t forkAs(pid_t number) {
  clone_args arguments{};
  arguments.exit_signal = SIGCHLD;
  arguments.set_tid = reinterpret_cast<std::uintptr_t>(&number);
  arguments.set_tid_size = 1;
  return static_cast<pid_t>(::syscall(SYS_clone3, &arguments, sizeof arguments));
}

std::string programOf(pid_t process) {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error).filename();
}

// Starts `program`, which waits for the file `gate`, under the number of a process that has ended.
pid_t startAs(pid_t number, const std::string& program, const std::string& gate) {
  const pid_t child = forkAs(number);
  if (child == 0) {
    ::close(STDOUT_FILENO);
    ::execl(program.c_str(), program.c_str(), "linger", gate.c_str(), nullptr);
    ::_exit(1);
  }
  const std::string name = std::filesystem::path(program).filename();
  while (child > 0 && programOf(child) != name) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return child;
}

}  // namespace

int recycle(const Arguments& arguments) {
  const pid_t helper = std::stoi(arguments.at(0));
  ::kill(helper, SIGSTOP);
  const pid_t stranger = ::fork();
  if (stranger == 0) connectAndEnd();
  ::waitpid(stranger, nullptr, 0);
  const pid_t heir = startAs(stranger, arguments.at(1), arguments.at(2));
  ::kill(helper, SIGCONT);
  if (heir != stranger) {
    std::cout << "impossible\n";
    return 0;
  }
  std::cout << stranger << std::endl;
  ::waitpid(heir, nullptr, 0);
  return 0;
}

}  // namespace halvo::soak
