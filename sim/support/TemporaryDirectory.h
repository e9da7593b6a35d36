// A directory of a test's own, removed with everything in it at the end.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace halvo::sim {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::filesystem::path& path() const { return path_; }

  // Replaces the file `name`; folders above it are made. Answers its full path.
  std::filesystem::path write(const std::filesystem::path& name, std::string_view text) const;

  // The whole file; empty when there is none.
  std::string read(const std::filesystem::path& name) const;

 private:
  std::filesystem::path path_;
};

}  // namespace halvo::sim
