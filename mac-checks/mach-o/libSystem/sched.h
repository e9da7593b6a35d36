// Giving way to other threads.
#pragma once

extern "C" {

int sched_yield(void);

}  // extern "C"
