// Makes chosen calls of the C library fail, for a program that is linked with its calls led through here (the linker's
// --wrap, so on Linux only): what a disk, a process table or a descriptor table that is out of order would answer.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace halvo {

// While it lives, some calls that this thread makes of one function do nothing and fail. Faults of several functions,
// and several faults of one function, may be in force at once.
class SystemCallFault {
 public:
  // The `first` to `last` call from now on, counted from 1, fails with `error`: in errno, or as the result of a
  // function that answers errno values. 0 for `error` is the answer 0 of a function that counts, such as a write of
  // nothing.
  SystemCallFault(std::string function, int error, int first = 1, int last = 1);
  SystemCallFault(const SystemCallFault&) = delete;
  SystemCallFault& operator=(const SystemCallFault&) = delete;
  ~SystemCallFault();

  // How many calls of the function this thread has made since, those that failed included.
  [[nodiscard]] int calls() const { return calls_; }

  // What a wrapper asks: whether this call fails, and with what.
  [[nodiscard]] static const SystemCallFault* of(const char* function);
  [[nodiscard]] int error() const { return error_; }

 private:
  std::string function_;
  int error_;
  int first_;
  int last_;
  int calls_ = 0;
  SystemCallFault* next_;
};

// While it lives, does something just before one call that this thread makes of a function: what somebody else on the
// machine may do at that moment.
class SystemCallHook {
 public:
  // Before the call of that number from now on, counted from 1.
  SystemCallHook(std::string function, int call, std::function<void()> action);
  SystemCallHook(const SystemCallHook&) = delete;
  SystemCallHook& operator=(const SystemCallHook&) = delete;
  ~SystemCallHook();

  // What a wrapper says before it goes on.
  static void announce(const char* function);

 private:
  std::string function_;
  int call_;
  std::function<void()> action_;
  int calls_ = 0;
  SystemCallHook* next_;
};

// While it lives, notes the flags of every open() and openat() of this thread, in their order.
class NotedOpenings {
 public:
  NotedOpenings();
  NotedOpenings(const NotedOpenings&) = delete;
  NotedOpenings& operator=(const NotedOpenings&) = delete;
  ~NotedOpenings();

  [[nodiscard]] const std::vector<int>& flags() const { return flags_; }

  // What a wrapper says before it goes on.
  static void note(int flags);

 private:
  std::vector<int> flags_;
};

}  // namespace halvo
