// What a process hands on to its children, set for the length of a test and put back afterwards.
#pragma once

#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {

// The descriptors of this process that are open now.
[[nodiscard]] std::vector<int> openDescriptors();
// Those of them that are not close-on-exec.
[[nodiscard]] std::vector<int> inheritableDescriptors();

// Open files that a child would inherit, none of them close-on-exec.
class OpenedDescriptors {
 public:
  explicit OpenedDescriptors(int count);

 private:
  std::vector<UniqueDescriptor> files_;
};

// The process may open nothing beyond the three standard descriptors.
class NoFreeDescriptors {
 public:
  NoFreeDescriptors();
  NoFreeDescriptors(const NoFreeDescriptors&) = delete;
  NoFreeDescriptors& operator=(const NoFreeDescriptors&) = delete;
  ~NoFreeDescriptors();

 private:
  rlimit before_{};
};

// Threads that open and close inheritable files and start children all the time.
class DescriptorChurn {
 public:
  DescriptorChurn(const ProcessRunner& runner, int threads);
  DescriptorChurn(const DescriptorChurn&) = delete;
  DescriptorChurn& operator=(const DescriptorChurn&) = delete;
  ~DescriptorChurn();

 private:
  std::atomic<bool> stop_ = false;
  std::vector<std::thread> threads_;
};

class AllSignalsBlocked {
 public:
  AllSignalsBlocked();
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;
  ~AllSignalsBlocked();

 private:
  sigset_t before_{};
};

class IgnoredSignal {
 public:
  explicit IgnoredSignal(int signal);
  IgnoredSignal(const IgnoredSignal&) = delete;
  IgnoredSignal& operator=(const IgnoredSignal&) = delete;
  ~IgnoredSignal();

 private:
  int signal_;
  void (*before_)(int);
};

// Descriptor 0 reads that file meanwhile.
class StandardInputFrom {
 public:
  explicit StandardInputFrom(const std::string& path);
  StandardInputFrom(const StandardInputFrom&) = delete;
  StandardInputFrom& operator=(const StandardInputFrom&) = delete;
  ~StandardInputFrom();

 private:
  UniqueDescriptor before_;
};

[[nodiscard]] std::vector<std::string> repeat(int times, const std::function<std::string()>& call);

// Calls with a mark of its own ("3.14") per thread and round, all threads at once; answers in the order of the marks.
std::vector<std::string> onThreads(int threads, int rounds, const std::function<std::string(const std::string&)>& call);
// Those marks, each in brackets.
[[nodiscard]] std::vector<std::string> expectedMarks(int threads, int rounds);

}  // namespace halvo
