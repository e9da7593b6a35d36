// The main queue and its timers. Other queues do not exist here: naming one ends the process.
#pragma once

#include <stdint.h>

#define NSEC_PER_MSEC 1000000ull

struct dispatch_object_s {};
struct dispatch_queue_s : dispatch_object_s {};
struct dispatch_queue_main_s : dispatch_queue_s {};
struct dispatch_source_s : dispatch_object_s {};

typedef struct dispatch_object_s* dispatch_object_t;
typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_queue_main_s* dispatch_queue_main_t;
typedef struct dispatch_source_s* dispatch_source_t;
typedef const struct dispatch_source_type_s* dispatch_source_type_t;

typedef void (*dispatch_function_t)(void*);
typedef uint64_t dispatch_time_t;

#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_TIME_FOREVER (~0ull)
#define DISPATCH_SOURCE_TYPE_TIMER (&_dispatch_source_type_timer)

extern "C" {

extern struct dispatch_queue_main_s _dispatch_main_q;
extern const struct dispatch_source_type_s _dispatch_source_type_timer;

static inline dispatch_queue_main_t dispatch_get_main_queue(void) { return &_dispatch_main_q; }

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_main(void) __attribute__((noreturn));

// Nanoseconds of uptime, which stands still while the machine sleeps.
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);

// A source starts inactive. The handler gets the context that is set when the handler is.
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                         dispatch_queue_t queue);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval, uint64_t leeway);
void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler);

void dispatch_set_context(dispatch_object_t object, void* context);
void dispatch_activate(dispatch_object_t object);

}  // extern "C"
