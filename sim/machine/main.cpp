#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "sim/machine/Commands.h"

int main(int argc, char** argv) try {
  const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  return halvo::sim::halvoSim(words, {.out = std::cout, .err = std::cerr});
} catch (const std::exception& problem) {
  std::cerr << "halvo-sim: " << problem.what() << "\n";
  return 1;
}
