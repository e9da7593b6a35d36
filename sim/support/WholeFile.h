// Reading a file at once.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace halvo::sim {

// All bytes of the file, or those up to where reading fails; none when it cannot be opened. Never throws for a file:
// what lies below /proc fails in the middle when its process ends.
inline std::string wholeFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();  // unlike the buffer's iterators, this takes an error for the end
  return std::move(bytes).str();
}

}  // namespace halvo::sim
