#include "sim/support/TemporaryDirectory.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace halvo::sim {

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "halvo-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
  path_ = std::filesystem::canonical(pattern);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryDirectory::write(const std::filesystem::path& name, std::string_view text) const {
  const std::filesystem::path file = path_ / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
  return file;
}

std::string TemporaryDirectory::read(const std::filesystem::path& name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace halvo::sim
