#include "HalvoHelper/testing/DeepTree.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo {
namespace {

UniqueDescriptor openDirectory(int above, const char* name) {
  UniqueDescriptor directory(::openat(above, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.valid()) throw std::system_error(errno, std::generic_category(), name);
  return directory;
}

struct Work {
  const std::function<bool()>& work;
  bool answer = false;
};

void* run(void* argument) {
  auto* work = static_cast<Work*>(argument);
  work->answer = work->work();
  return nullptr;
}

}  // namespace

void makeChain(const std::string& directory, const std::string& name, int levels) {
  UniqueDescriptor here = openDirectory(AT_FDCWD, directory.c_str());
  for (int level = 0; level < levels; ++level) {
    ::mkdirat(here.get(), name.c_str(), 0700);
    UniqueDescriptor next = openDirectory(here.get(), name.c_str());
    here = std::move(next);
  }
  UniqueDescriptor(::openat(here.get(), "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}

bool onSmallStack(const std::function<bool()>& work) {
  constexpr std::size_t kStack = 256 * 1024;
  pthread_attr_t attributes{};
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setstacksize(&attributes, kStack);
  Work shared{work};
  pthread_t thread{};
  const int error = ::pthread_create(&thread, &attributes, run, &shared);
  ::pthread_attr_destroy(&attributes);
  if (error != 0) throw std::system_error(error, std::generic_category(), "thread");
  ::pthread_join(thread, nullptr);
  return shared.answer;
}

}  // namespace halvo
