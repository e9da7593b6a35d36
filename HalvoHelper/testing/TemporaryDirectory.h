// A directory of its own for one test, gone with everything in it when the test ends.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace halvo {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  // The path of the directory itself, free of links, or of something in it. Nothing is created.
  [[nodiscard]] const std::filesystem::path& path() const { return root_; }
  [[nodiscard]] std::string path(std::string_view name) const { return (root_ / name).string(); }

  // Each makes one item, with the directories above it, and answers its full path. They throw when that fails.
  std::string makeFile(std::string_view name, std::string_view contents = "") const;
  std::string makeSparseFile(std::string_view name, std::uintmax_t bytes) const;
  std::string makeDirectory(std::string_view name) const;
  std::string makeFifo(std::string_view name) const;
  std::string makeLink(std::string_view name, const std::string& target) const;

  // Makes or replaces a file, as makeFile() does.
  std::filesystem::path write(const std::filesystem::path& name, std::string_view contents) const;
  // The whole file; empty when there is none.
  [[nodiscard]] std::string read(const std::filesystem::path& name) const;

 private:
  [[nodiscard]] std::string readyPath(std::string_view name) const;

  std::filesystem::path root_;
};

// What a test looks at afterwards.
[[nodiscard]] std::string contentsOf(const std::string& path);
[[nodiscard]] unsigned permissionsOf(const std::string& path);
// Whether anything has that name, a dangling link included.
[[nodiscard]] bool isNamed(const std::string& path);

}  // namespace halvo
