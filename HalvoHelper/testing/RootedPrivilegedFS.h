// The real file system with another root, so that code that names the system's own places can be run on real files.
#pragma once

#include <utility>

#include "HalvoHelper/system/RealPrivilegedFS.h"

namespace halvo {

// Puts the root before every absolute path and hands the call on; a path that is not absolute stays as it is. Links
// lead where they lead, also out of the root.
class RootedPrivilegedFS final : public PrivilegedFS {
 public:
  explicit RootedPrivilegedFS(std::string root) : root_(std::move(root)) {}

  bool exists(const std::string& path) const override { return fs_.exists(below(path)); }
  bool remove(const std::string& path) const override { return fs_.remove(below(path)); }
  bool removeTree(const std::string& path) const override { return fs_.removeTree(below(path)); }
  bool copyTree(const std::string& source, const std::string& destination) const override {
    return fs_.copyTree(below(source), below(destination));
  }
  bool stageFile(const std::string& source, const std::string& destination) const override {
    return fs_.stageFile(below(source), below(destination));
  }
  bool makeDir(const std::string& path) const override { return fs_.makeDir(below(path)); }
  std::vector<std::string> entries(const std::string& path) const override { return fs_.entries(below(path)); }
  std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const override {
    return fs_.modifiedDaysAgo(below(path));
  }
  bool makePrivateDir(const std::string& path, int mode) const override {
    return fs_.makePrivateDir(below(path), mode);
  }

 private:
  [[nodiscard]] std::string below(const std::string& path) const { return path.starts_with('/') ? root_ + path : path; }

  std::string root_;
  RealPrivilegedFS fs_;
};

}  // namespace halvo
