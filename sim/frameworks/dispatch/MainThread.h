// What becomes of the main thread once the main queue runs.
#pragma once

namespace halvo::sim {

// Ends the main thread as a Mac does: its stack is unwound and its locals are destroyed. What is left of it sleeps, so
// that the process keeps its first thread and all that is looked up by it.
[[noreturn]] void endMainThread();

// For test programs, whose frameworks catch everything on the way: the thread only sleeps. Before other threads start.
void letMainThreadSleepInstead();

}  // namespace halvo::sim
