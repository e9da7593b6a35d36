// A file tree in memory that obeys the same rules as the real one, so that several runs can build on each other.
#pragma once

#include <cstddef>
#include <map>
#include <set>

#include "HalvoHelper/system/PrivilegedFS.h"

namespace halvo {

// Thrown out of a call to say that the process ended there. No product code catches it.
struct ProcessKilled {};

// Paths are absolute and without trailing slashes. Links do not exist here.
class InMemoryPrivilegedFS final : public PrivilegedFS {
 public:
  bool exists(const std::string& path) const override;
  bool remove(const std::string& path) const override;
  bool removeTree(const std::string& path) const override;
  bool copyTree(const std::string& source, const std::string& destination) const override;
  bool stageFile(const std::string& source, const std::string& destination) const override;
  bool makeDir(const std::string& path) const override;
  std::vector<std::string> entries(const std::string& path) const override;
  std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const override;
  bool makePrivateDir(const std::string& path, int mode) const override;

  // A step that something else takes on the same machine, such as a tool: it counts and may be the last one.
  void step() const;

  mutable std::map<std::string, std::string> files;  // contents by path
  mutable std::set<std::string> directories;
  std::map<std::string, std::int64_t> daysAgo;  // 0 for what is not named here

  // Calls that fail, as lines such as "copyTree /a -> /b". A copy that fails has removed its destination already.
  std::set<std::string> failing;

  // The calls that are still carried out before the process ends; nothing happens afterwards. removeTree() then answers
  // false, since it may be called while the stack unwinds; every other call throws ProcessKilled.
  mutable std::optional<std::size_t> callsUntilKilled;

 private:
  [[nodiscard]] bool alive() const;
  void addDirectories(const std::string& path) const;
  bool eraseTree(const std::string& path) const;
};

}  // namespace halvo
