// What the drivers have in common: verbs, which bench/run asks for in whatever order it wants them interleaved.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace halvo::bench {

using Words = std::vector<std::string>;

// Does what its words say and answers figures as words on one line. What cannot be measured is a std::runtime_error.
using Verb = std::function<std::string(const Words& words)>;

// With arguments, carries out the one verb that they name. Without, one verb for each line of standard input, the
// answers line by line on standard output, until the input ends. Every driver also has the verb "peak": the most
// kilobytes of memory that its process ever held. Answers the exit status: 1 with the reason on standard error as soon
// as something cannot be measured.
int drive(std::map<std::string, Verb> verbs, int argc, char* argv[]);

// How many nanoseconds the work takes.
template <typename Work>
std::int64_t nanosecondsOf(const Work& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - begin).count();
}

// A verb "TIMES WORDS...": the nanoseconds of as many runs of `work` as its first word says. `prepare` comes before
// each of them and is not in the time.
using Work = std::function<void(const Words& words)>;
Verb timed(
    const Work& work, const Work& prepare = [](const Words&) {});

// What a measurement cannot go on without.
void require(bool holds, const std::string& what);

}  // namespace halvo::bench
