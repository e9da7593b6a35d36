// What the machine looks like from inside, before anything depends on it.
#pragma once

namespace halvo::sim {

// Prints "several" when more accounts than uid 0 exist in this machine, else "one", and answers 0. Says on standard
// error what is missing, and answers 1: the process table has to be readable, since clients are identified by it.
int probeMachine();

}  // namespace halvo::sim
