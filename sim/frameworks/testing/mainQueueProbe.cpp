// A program whose main() has a local: prints when it is destroyed, and from the main queue afterwards.
#include <dispatch/dispatch.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace {

struct Local {
  Local() = default;
  Local(const Local&) = delete;
  Local& operator=(const Local&) = delete;
  ~Local() { std::cout << "destroyed" << std::flush; }
};

void leave(void* /*context*/) {
  std::cout << (::gettid() == ::getpid() ? " main thread" : " worker") << std::flush;
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main() {
  const Local local;
  constexpr std::int64_t kSoon = 50 * static_cast<std::int64_t>(NSEC_PER_MSEC);
  dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, kSoon), dispatch_get_main_queue(), nullptr, leave);
  dispatch_main();
}
