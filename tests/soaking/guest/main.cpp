// halvo-soak-guest: the clients of the soak, good and hostile, in one program that is signed in several ways.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <string>

#include "tests/soaking/guest/Verbs.h"

int main(int argc, char* argv[]) {
  using namespace halvo::soak;
  // A request that is never answered must not hold the soak for ever.
  constexpr unsigned kLongest = 1200;
  const std::map<std::string, int (*)(const Arguments&)> verbs = {
      {"calls", calls},   {"census", census}, {"die", die},         {"grant", grant},   {"knock", knock},
      {"linger", linger}, {"pinger", pinger}, {"recycle", recycle}, {"replay", replay}, {"storm", storm},
  };
  const Arguments words(argv + std::min(argc, 1), argv + argc);
  const auto verb = words.empty() ? verbs.end() : verbs.find(words.front());
  if (verb == verbs.end()) {
    std::cerr << "halvo-soak-guest: no such verb\n";
    return 64;
  }
  ::alarm(kLongest);
  return verb->second(Arguments(words.begin() + 1, words.end()));
}
