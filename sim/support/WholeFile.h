// Reading a file at once.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace halvo::sim {

// All bytes of the file; none when it cannot be read.
inline std::string wholeFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace halvo::sim
