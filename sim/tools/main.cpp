// The installed tools: one program under several names.
#include <iostream>

#include "sim/tools/SystemTools.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const std::string_view name = argc > 0 ? argv[0] : "";
  const halvo::sim::ToolStreams streams{.out = std::cout, .err = std::cerr};
  return halvo::sim::actAsSystemTool(name, arguments, "/", streams);
}
