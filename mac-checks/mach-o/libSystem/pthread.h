// Threads, as far as libc++'s are made of them. Every object is a signature and so many opaque bytes.
#pragma once

#include <sched.h>

#include <sys/types.h>

#define DARWIN_OPAQUE(name, size) \
  struct name {                   \
    long signature;               \
    char opaque[size];            \
  }

typedef DARWIN_OPAQUE(_opaque_pthread_attr_t, 56) pthread_attr_t;
typedef DARWIN_OPAQUE(_opaque_pthread_cond_t, 40) pthread_cond_t;
typedef DARWIN_OPAQUE(_opaque_pthread_condattr_t, 8) pthread_condattr_t;
typedef DARWIN_OPAQUE(_opaque_pthread_mutex_t, 56) pthread_mutex_t;
typedef DARWIN_OPAQUE(_opaque_pthread_mutexattr_t, 8) pthread_mutexattr_t;
typedef DARWIN_OPAQUE(_opaque_pthread_once_t, 8) pthread_once_t;
typedef unsigned long pthread_key_t;
typedef struct _opaque_pthread_t* pthread_t;

#define PTHREAD_MUTEX_INITIALIZER \
  {                               \
    0x32AAABA7, {}                \
  }
#define PTHREAD_COND_INITIALIZER \
  {                              \
    0x3CB0B1BB, {}               \
  }
#define PTHREAD_ONCE_INIT \
  {                       \
    0x30B1BCBA, {}        \
  }
#define PTHREAD_MUTEX_RECURSIVE 2

extern "C" {

int pthread_attr_init(pthread_attr_t* attributes);
int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size);
int pthread_attr_destroy(pthread_attr_t* attributes);
int pthread_create(pthread_t* __restrict thread, const pthread_attr_t* __restrict attributes, void* (*start)(void*),
                   void* __restrict argument);
int pthread_join(pthread_t thread, void** result);
int pthread_detach(pthread_t thread);
pthread_t pthread_self(void);
int pthread_equal(pthread_t left, pthread_t right);

int pthread_mutexattr_init(pthread_mutexattr_t* attributes);
int pthread_mutexattr_settype(pthread_mutexattr_t* attributes, int type);
int pthread_mutexattr_destroy(pthread_mutexattr_t* attributes);
int pthread_mutex_init(pthread_mutex_t* __restrict mutex, const pthread_mutexattr_t* __restrict attributes);
int pthread_mutex_lock(pthread_mutex_t* mutex);
int pthread_mutex_trylock(pthread_mutex_t* mutex);
int pthread_mutex_unlock(pthread_mutex_t* mutex);
int pthread_mutex_destroy(pthread_mutex_t* mutex);

int pthread_cond_signal(pthread_cond_t* condition);
int pthread_cond_broadcast(pthread_cond_t* condition);
int pthread_cond_wait(pthread_cond_t* __restrict condition, pthread_mutex_t* __restrict mutex);
int pthread_cond_timedwait(pthread_cond_t* __restrict condition, pthread_mutex_t* __restrict mutex,
                           const struct timespec* __restrict until);
int pthread_cond_destroy(pthread_cond_t* condition);

int pthread_once(pthread_once_t* once, void (*function)(void));
int pthread_key_create(pthread_key_t* key, void (*destroy)(void*));
int pthread_key_delete(pthread_key_t key);
void* pthread_getspecific(pthread_key_t key);
int pthread_setspecific(pthread_key_t key, const void* value);

}  // extern "C"

#include <signal.h>
