// Answers one decision, named by its argument: a question a line on standard input, an answer a line on standard
// output. decide.py asks.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <string_view>

#include "tests/oracle/Decisions.h"

namespace {

using Decision = halvo::Words (*)(const halvo::Words& question);

const std::map<std::string_view, Decision> kDecisions = {
    {"accounts", halvo::decideAccounts}, {"bundle", halvo::decideBundlePath}, {"downgrade", halvo::decideDowngrade},
    {"reports", halvo::decideReport},    {"right", halvo::decideRight},       {"trust", halvo::decideTrust},
    {"versions", halvo::decideOrder},
};

// Each answer is out before the next question is read: should one end the process, it is known which.
void answerAll(Decision decide) {
  std::string line;
  while (std::getline(std::cin, line)) std::cout << halvo::lineOf(decide(halvo::wordsOf(line))) << std::endl;
}

}  // namespace

int main(int argc, char* argv[]) {
  const auto decision = kDecisions.find(argc == 2 ? argv[1] : "");
  if (decision == kDecisions.end()) {
    std::cerr << "usage: halvo_decision_probe DECISION\n";
    return EXIT_FAILURE;
  }
  std::ios::sync_with_stdio(false);
  try {
    answerAll(decision->second);
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
