// What the program inside the machine can do. Each verb prints its figures as words and answers an exit status: 0 when
// everything was as it should be, 1 with what was not on standard error.
#pragma once

#include <string>
#include <vector>

namespace halvo::soak {

using Arguments = std::vector<std::string>;

// census: every process as "PID NAME DESCRIPTORS THREADS KILOBYTES"; takes root.
int census(const Arguments& arguments);

// pinger STOP: pings over fresh connections until the file STOP is there. Prints "PINGS SLOWEST_MS".
int pinger(const Arguments& arguments);

// storm ROUNDS BURST SEED: each round sends a burst of requests around the moment of the helper's idle exit. Prints
// "REQUESTS REPEATED SLOWEST_MS".
int storm(const Arguments& arguments);

// calls COUNT SEED: calls to every method in random order with random values, none of which is authorized.
int calls(const Arguments& arguments);

// knock COUNT: pings over COUNT fresh connections, each once. Prints how many were answered.
int knock(const Arguments& arguments);

// die COUNT: COUNT processes that connect, send and end at once, one after the other.
int die(const Arguments& arguments);

// linger GATE: waits for the file GATE, pings once, and prints what came of it.
int linger(const Arguments& arguments);

// grant STOP [destroy]: obtains an administrator's approval, writes its external form to the file STOP.form, and keeps
// it until the file STOP is there; or gives it back before it writes.
int grant(const Arguments& arguments);

// replay FORM: asks for an install of a package that does not exist with this external form; prints what came of it.
int replay(const Arguments& arguments);

// recycle HELPER PROGRAM GATE: as root, lets a stranger connect and end while the helper, a process number, is stopped,
// and PROGRAM, another copy of this one, take the stranger's process number until the file GATE is there. Prints the
// number, or "impossible" where the machine lets nobody choose one.
int recycle(const Arguments& arguments);

}  // namespace halvo::soak
