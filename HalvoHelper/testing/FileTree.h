// The files that a privileged file system works on, as something else on the machine changes them and as a test looks
// at them: in memory, or on the disk. Whoever is tested on one can be tested on the other.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/testing/InMemoryPrivilegedFS.h"
#include "HalvoHelper/testing/RootedPrivilegedFS.h"

namespace halvo {

// Paths are absolute within the tree.
class FileTree {
 public:
  FileTree() = default;
  FileTree(const FileTree&) = delete;
  FileTree& operator=(const FileTree&) = delete;
  virtual ~FileTree() = default;

  [[nodiscard]] virtual std::shared_ptr<const PrivilegedFS> fs() const = 0;

  // Makes the file with the directories above it, or replaces it in one step. False when that fails, and then no half
  // file is left.
  virtual bool write(const std::string& path, const std::string& contents) const = 0;

  // What lies at `path` and below in the order of the paths, which are given from there on: "/" behind a directory, "="
  // and the contents behind a file. Empty when nothing is there.
  [[nodiscard]] virtual std::vector<std::string> listing(const std::string& path) const = 0;

  virtual void setDaysAgo(const std::string& path, std::int64_t days) const = 0;

  // A step that something other than the file system takes.
  virtual void step() const {}
};

class InMemoryTree final : public FileTree {
 public:
  [[nodiscard]] std::shared_ptr<const PrivilegedFS> fs() const override { return memory; }
  bool write(const std::string& path, const std::string& contents) const override;
  [[nodiscard]] std::vector<std::string> listing(const std::string& path) const override;
  void setDaysAgo(const std::string& path, std::int64_t days) const override;
  void step() const override { memory->step(); }

  std::shared_ptr<InMemoryPrivilegedFS> memory = std::make_shared<InMemoryPrivilegedFS>();
};

// Below an existing directory of the disk, which stays.
class DiskTree final : public FileTree {
 public:
  explicit DiskTree(const std::string& root) : root_(root), fs_(std::make_shared<RootedPrivilegedFS>(root)) {}

  [[nodiscard]] std::shared_ptr<const PrivilegedFS> fs() const override { return fs_; }
  bool write(const std::string& path, const std::string& contents) const override;
  [[nodiscard]] std::vector<std::string> listing(const std::string& path) const override;
  void setDaysAgo(const std::string& path, std::int64_t days) const override;

 private:
  std::string root_;
  std::shared_ptr<const RootedPrivilegedFS> fs_;
};

}  // namespace halvo
