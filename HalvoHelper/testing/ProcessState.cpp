#include "HalvoHelper/testing/ProcessState.h"

#include <fcntl.h>

#include <utility>

namespace halvo {
namespace {

UniqueDescriptor openInheritable() { return UniqueDescriptor(::open("/dev/null", O_RDONLY)); }

std::vector<int> descriptorsWhere(bool (*holds)(int flags)) {
  constexpr int kHighest = 1024;
  std::vector<int> descriptors;
  for (int descriptor = 0; descriptor < kHighest; ++descriptor) {
    if (holds(::fcntl(descriptor, F_GETFD))) descriptors.push_back(descriptor);
  }
  return descriptors;
}

std::string mark(int thread, int round) { return std::to_string(thread) + "." + std::to_string(round); }

}  // namespace

std::vector<int> openDescriptors() {
  return descriptorsWhere([](int flags) { return flags >= 0; });
}

std::vector<int> inheritableDescriptors() {
  return descriptorsWhere([](int flags) { return flags == 0; });
}

OpenedDescriptors::OpenedDescriptors(int count) {
  for (int i = 0; i < count; ++i) files_.push_back(openInheritable());
}

NoFreeDescriptors::NoFreeDescriptors() {
  ::getrlimit(RLIMIT_NOFILE, &before_);
  const rlimit standardOnly{STDERR_FILENO + 1, before_.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &standardOnly);
}

NoFreeDescriptors::~NoFreeDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

DescriptorChurn::DescriptorChurn(const ProcessRunner& runner, int threads) {
  for (int i = 0; i < threads; ++i) {
    threads_.emplace_back([this, &runner] {
      while (!stop_) {
        const OpenedDescriptors held(8);
        runner.run("/bin/sh", {"-c", ":"});
      }
    });
  }
}

DescriptorChurn::~DescriptorChurn() {
  stop_ = true;
  for (std::thread& thread : threads_) thread.join();
}

AllSignalsBlocked::AllSignalsBlocked() {
  sigset_t all{};
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before_);
}

AllSignalsBlocked::~AllSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

IgnoredSignal::IgnoredSignal(int signal) : signal_(signal), before_(std::signal(signal, SIG_IGN)) {}

IgnoredSignal::~IgnoredSignal() { std::signal(signal_, before_); }

StandardInputFrom::StandardInputFrom(const std::string& path) : before_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
  const UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  ::dup2(file.get(), STDIN_FILENO);
}

StandardInputFrom::~StandardInputFrom() { ::dup2(before_.get(), STDIN_FILENO); }

std::vector<std::string> repeat(int times, const std::function<std::string()>& call) {
  std::vector<std::string> answers;
  for (int i = 0; i < times; ++i) answers.push_back(call());
  return answers;
}

std::vector<std::string> onThreads(int threads, int rounds,
                                   const std::function<std::string(const std::string&)>& call) {
  std::vector<std::string> answers(static_cast<std::size_t>(threads) * static_cast<std::size_t>(rounds));
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread] {
      for (int round = 0; round < rounds; ++round) {
        answers[static_cast<std::size_t>(thread * rounds + round)] = call(mark(thread, round));
      }
    });
  }
  for (std::thread& thread : running) thread.join();
  return answers;
}

std::vector<std::string> expectedMarks(int threads, int rounds) {
  std::vector<std::string> marks;
  for (int thread = 0; thread < threads; ++thread) {
    for (int round = 0; round < rounds; ++round) marks.push_back("[" + mark(thread, round) + "]");
  }
  return marks;
}

}  // namespace halvo
