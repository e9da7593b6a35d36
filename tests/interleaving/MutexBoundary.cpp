// Every mutex that a request takes is a boundary, whoever made it. The linker leads the calls of the whole program
// through here (-Wl,--wrap), so that the product needs no mutex of a kind of its own for this.
#include <pthread.h>

#include "tests/interleaving/Turns.h"

using halvo::interleaving::Turns;

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker gives the names.
extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  Turns::beforeLock(mutex);
  return __real_pthread_mutex_lock(mutex);
}

int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
  const int status = __real_pthread_mutex_unlock(mutex);
  Turns::afterUnlock(mutex);
  return status;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
