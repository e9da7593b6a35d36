#include "sim/frameworks/dispatch/MainThread.h"

#include <pthread.h>
#include <unistd.h>

namespace halvo::sim {
namespace {

bool sleepsInstead = false;

[[noreturn]] void sleepForever(void* /*unused*/ = nullptr) {
  for (;;) ::pause();
}

}  // namespace

void endMainThread() {
  if (sleepsInstead) sleepForever();
  // Called when the unwinding is over.
  static pthread_key_t key{};
  pthread_key_create(&key, sleepForever);
  pthread_setspecific(key, &key);
  pthread_exit(nullptr);
}

void letMainThreadSleepInstead() { sleepsInstead = true; }

}  // namespace halvo::sim
