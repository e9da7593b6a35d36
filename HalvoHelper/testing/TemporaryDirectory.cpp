#include "HalvoHelper/testing/TemporaryDirectory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace halvo {
namespace {

void require(bool done, const std::string& what) {
  if (!done) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "halvo-XXXXXX").string();
  require(::mkdtemp(pattern.data()) != nullptr, pattern);
  root_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

std::string TemporaryDirectory::makeFile(std::string_view name, std::string_view contents) const {
  const std::string made = readyPath(name);
  std::ofstream file(made, std::ios::binary);
  file << contents;
  require(file.flush().good(), made);
  return made;
}

std::string TemporaryDirectory::makeSparseFile(std::string_view name, std::uintmax_t bytes) const {
  const std::string made = makeFile(name);
  std::filesystem::resize_file(made, bytes);
  return made;
}

std::string TemporaryDirectory::makeDirectory(std::string_view name) const {
  const std::string made = readyPath(name);
  std::filesystem::create_directory(made);
  return made;
}

std::string TemporaryDirectory::makeFifo(std::string_view name) const {
  const std::string made = readyPath(name);
  require(::mkfifo(made.c_str(), 0600) == 0, made);
  return made;
}

std::string TemporaryDirectory::makeLink(std::string_view name, const std::string& target) const {
  const std::string made = readyPath(name);
  std::filesystem::create_symlink(target, made);
  return made;
}

std::filesystem::path TemporaryDirectory::write(const std::filesystem::path& name, std::string_view contents) const {
  return makeFile(name.native(), contents);
}

std::string TemporaryDirectory::read(const std::filesystem::path& name) const {
  const std::string file = path(name.native());
  return isNamed(file) ? contentsOf(file) : "";
}

std::string TemporaryDirectory::readyPath(std::string_view name) const {
  const std::filesystem::path ready = root_ / name;
  std::filesystem::create_directories(ready.parent_path());
  return ready.string();
}

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.is_open(), path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

unsigned permissionsOf(const std::string& path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

bool isNamed(const std::string& path) {
  return std::filesystem::symlink_status(path).type() != std::filesystem::file_type::not_found;
}

}  // namespace halvo
