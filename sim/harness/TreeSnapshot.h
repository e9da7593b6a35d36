// What lies in a folder at one moment, and how two moments differ.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace halvo::sim {

struct FileState {
  enum class Kind { file, directory, link, other };
  Kind kind = Kind::other;
  unsigned mode = 0;   // permission bits
  unsigned owner = 0;  // as the host sees it
  unsigned group = 0;
  std::uintmax_t size = 0;       // of a file
  std::int64_t modified = 0;     // of a file, in nanoseconds since 1970; a folder's changes with every entry
  std::uint64_t content = 0;     // hash of a file's bytes or of a link's target
  std::uint64_t attributes = 0;  // hash of the extended attributes' names and values
  bool operator==(const FileState&) const = default;
};

// By path inside the machine.
using TreeSnapshot = std::map<std::string, FileState>;

struct TreeChange {
  enum class Kind { added, removed, changed };
  Kind kind;
  std::string path;
  bool operator==(const TreeChange&) const = default;
};

// Adds what lies at `host`, and below it when it is a folder, under the name `inside`. Follows no link; what vanishes
// meanwhile is left out.
void addToSnapshot(TreeSnapshot& snapshot, const std::filesystem::path& host, const std::string& inside);

// In the order of the paths.
std::vector<TreeChange> changesBetween(const TreeSnapshot& before, const TreeSnapshot& after);

// "added /Library/...", for people.
std::string describe(const TreeChange& change);

}  // namespace halvo::sim
