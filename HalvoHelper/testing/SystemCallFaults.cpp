#include "HalvoHelper/testing/SystemCallFaults.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

namespace halvo {
namespace {

thread_local SystemCallFault* newestFault = nullptr;
thread_local SystemCallHook* newestHook = nullptr;
thread_local NotedOpenings* openings = nullptr;

// The answer of a call that is to fail: `failure` with errno set, or 0 where the fault says so.
template <typename Result>
Result failed(const SystemCallFault& fault, Result failure) {
  if (fault.error() == 0) return Result{};
  errno = fault.error();
  return failure;
}

}  // namespace

SystemCallFault::SystemCallFault(std::string function, int error, int first, int last)
    : function_(std::move(function)), error_(error), first_(first), last_(last), next_(newestFault) {
  newestFault = this;
}

SystemCallFault::~SystemCallFault() { newestFault = next_; }

const SystemCallFault* SystemCallFault::of(const char* function) {
  SystemCallHook::announce(function);
  const SystemCallFault* failing = nullptr;
  for (SystemCallFault* fault = newestFault; fault != nullptr; fault = fault->next_) {
    if (fault->function_ != function) continue;
    ++fault->calls_;
    if (fault->calls_ >= fault->first_ && fault->calls_ <= fault->last_) failing = fault;
  }
  return failing;
}

SystemCallHook::SystemCallHook(std::string function, int call, std::function<void()> action)
    : function_(std::move(function)), call_(call), action_(std::move(action)), next_(newestHook) {
  newestHook = this;
}

SystemCallHook::~SystemCallHook() { newestHook = next_; }

void SystemCallHook::announce(const char* function) {
  for (SystemCallHook* hook = newestHook; hook != nullptr; hook = hook->next_) {
    if (hook->function_ == function && ++hook->calls_ == hook->call_) hook->action_();
  }
}

NotedOpenings::NotedOpenings() { openings = this; }

NotedOpenings::~NotedOpenings() { openings = nullptr; }

void NotedOpenings::note(int flags) {
  if (openings != nullptr) openings->flags_.push_back(flags);
}

}  // namespace halvo

using halvo::NotedOpenings;
using halvo::SystemCallFault;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp): the linker gives the names, and
// three of the functions take an argument only with some flags.
extern "C" {

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : mode_t{};
  va_end(rest);
  NotedOpenings::note(flags);
  if (const auto* fault = SystemCallFault::of("open")) return halvo::failed(*fault, -1);
  return __real_open(path, flags, mode);
}

int __real_openat(int directory, const char* path, int flags, ...);
int __wrap_openat(int directory, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : mode_t{};
  va_end(rest);
  NotedOpenings::note(flags);
  if (const auto* fault = SystemCallFault::of("openat")) return halvo::failed(*fault, -1);
  return __real_openat(directory, path, flags, mode);
}

// The product uses only commands that take no argument or a number.
int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...) {
  va_list rest;
  va_start(rest, command);
  const long argument = va_arg(rest, long);
  va_end(rest);
  if (const auto* fault = SystemCallFault::of("fcntl")) return halvo::failed(*fault, -1);
  return __real_fcntl(descriptor, command, argument);
}

// The descriptor is closed all the same, as it is when close(2) reports data that could not be written.
int __real_close(int descriptor);
int __wrap_close(int descriptor) {
  const auto* fault = SystemCallFault::of("close");
  const int status = __real_close(descriptor);
  return fault == nullptr ? status : halvo::failed(*fault, -1);
}

ssize_t __real_pread(int descriptor, void* buffer, size_t size, off_t offset);
ssize_t __wrap_pread(int descriptor, void* buffer, size_t size, off_t offset) {
  if (const auto* fault = SystemCallFault::of("pread")) return halvo::failed<ssize_t>(*fault, -1);
  return __real_pread(descriptor, buffer, size, offset);
}

ssize_t __real_read(int descriptor, void* buffer, size_t size);
ssize_t __wrap_read(int descriptor, void* buffer, size_t size) {
  if (const auto* fault = SystemCallFault::of("read")) return halvo::failed<ssize_t>(*fault, -1);
  return __real_read(descriptor, buffer, size);
}

ssize_t __real_write(int descriptor, const void* buffer, size_t size);
ssize_t __wrap_write(int descriptor, const void* buffer, size_t size) {
  if (const auto* fault = SystemCallFault::of("write")) return halvo::failed<ssize_t>(*fault, -1);
  return __real_write(descriptor, buffer, size);
}

int __real_chmod(const char* path, mode_t mode);
int __wrap_chmod(const char* path, mode_t mode) {
  if (const auto* fault = SystemCallFault::of("chmod")) return halvo::failed(*fault, -1);
  return __real_chmod(path, mode);
}

int __real_fstat(int descriptor, struct stat* info);
int __wrap_fstat(int descriptor, struct stat* info) {
  if (const auto* fault = SystemCallFault::of("fstat")) return halvo::failed(*fault, -1);
  return __real_fstat(descriptor, info);
}

int __real_fstatat(int directory, const char* path, struct stat* info, int flags);
int __wrap_fstatat(int directory, const char* path, struct stat* info, int flags) {
  if (const auto* fault = SystemCallFault::of("fstatat")) return halvo::failed(*fault, -1);
  return __real_fstatat(directory, path, info, flags);
}

int __real_lstat(const char* path, struct stat* info);
int __wrap_lstat(const char* path, struct stat* info) {
  if (const auto* fault = SystemCallFault::of("lstat")) return halvo::failed(*fault, -1);
  return __real_lstat(path, info);
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  if (const auto* fault = SystemCallFault::of("unlink")) return halvo::failed(*fault, -1);
  return __real_unlink(path);
}

int __real_unlinkat(int directory, const char* path, int flags);
int __wrap_unlinkat(int directory, const char* path, int flags) {
  if (const auto* fault = SystemCallFault::of("unlinkat")) return halvo::failed(*fault, -1);
  return __real_unlinkat(directory, path, flags);
}

DIR* __real_fdopendir(int descriptor);
DIR* __wrap_fdopendir(int descriptor) {
  if (const auto* fault = SystemCallFault::of("fdopendir")) return halvo::failed<DIR*>(*fault, nullptr);
  return __real_fdopendir(descriptor);
}

struct dirent* __real_readdir(DIR* directory);
struct dirent* __wrap_readdir(DIR* directory) {
  if (const auto* fault = SystemCallFault::of("readdir")) return halvo::failed<struct dirent*>(*fault, nullptr);
  return __real_readdir(directory);
}

int __real_pipe(int* ends);
int __wrap_pipe(int* ends) {
  if (const auto* fault = SystemCallFault::of("pipe")) return halvo::failed(*fault, -1);
  return __real_pipe(ends);
}

pid_t __real_waitpid(pid_t child, int* status, int options);
pid_t __wrap_waitpid(pid_t child, int* status, int options) {
  if (const auto* fault = SystemCallFault::of("waitpid")) return halvo::failed(*fault, -1);
  return __real_waitpid(child, status, options);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)
