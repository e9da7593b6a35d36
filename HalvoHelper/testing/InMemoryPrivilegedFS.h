// A file tree in memory that obeys the same rules as the real one, so that several runs can build on each other.
#pragma once

#include <cstddef>
#include <map>
#include <set>

#include "HalvoHelper/system/PrivilegedFS.h"

namespace halvo {

// Thrown out of a call to say that the process ended there. No product code catches it.
struct ProcessKilled {};

// Paths are absolute. Links, owners and permissions do not exist here.
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

  // What something else on the machine writes: makes the directories above, replaces the file, counts as no step. False
  // where a directory is, or a file among those above.
  bool write(const std::string& path, const std::string& contents) const;

  mutable std::map<std::string, std::string> files;  // contents by path
  mutable std::set<std::string> directories = {"/"};
  mutable std::map<std::string, std::int64_t> daysAgo;  // 0 for what is not named here

  // Calls that fail, as lines such as "copyTree /a -> /b". A copy that fails has removed its destination already and
  // leaves nothing of itself.
  std::set<std::string> failing;

  // The calls that are still carried out before the process ends; nothing happens afterwards. removeTree() then answers
  // false, since it may be called while the stack unwinds; every other call throws ProcessKilled.
  mutable std::optional<std::size_t> callsUntilKilled;

 private:
  [[nodiscard]] bool alive() const;
  [[nodiscard]] bool isThere(const std::string& path) const;
  bool makeDirectories(const std::string& path) const;
  void put(const std::string& path, const std::string& contents) const;
  void eraseTree(const std::string& path) const;
};

}  // namespace halvo
