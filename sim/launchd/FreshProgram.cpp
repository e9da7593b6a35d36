#include "sim/launchd/FreshProgram.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace halvo::sim {
namespace {

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> list;
  for (std::string& word : words) list.push_back(word.data());
  list.push_back(nullptr);
  return list;
}

}  // namespace

int becomeFreshProgram(const std::string& program, std::vector<std::string> arguments,
                       std::vector<std::string> environment) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) ::sigaction(number, &standard, nullptr);
  sigset_t none{};
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::execvpe(program.c_str(), pointers(arguments).data(), pointers(environment).data());
  return errno;
}

}  // namespace halvo::sim
