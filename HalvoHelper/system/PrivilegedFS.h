// Every change that the helper makes to the file system, as a seam. Answers are values; nothing throws or logs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

// Paths go to the system as they are. Every operation blocks and may be called from any thread.
class PrivilegedFS {
 public:
  PrivilegedFS() = default;
  PrivilegedFS(const PrivilegedFS&) = delete;
  PrivilegedFS& operator=(const PrivilegedFS&) = delete;
  virtual ~PrivilegedFS() = default;

  // Whether something is there. Follows links, so a dangling link counts as absent.
  virtual bool exists(const std::string& path) const = 0;

  // Unlinks one file or link, never a directory. True when it is gone, also when it was before.
  virtual bool remove(const std::string& path) const = 0;

  // Removes what is at `path` with everything below it, following no link: a link is removed, not what it points to.
  // True when nothing is there afterwards; an absent path, and a dangling link, which stays, count as nothing.
  virtual bool removeTree(const std::string& path) const = 0;

  // Replaces `destination` wholly by a copy of `source`, making the directories above it. A copy that fails leaves
  // nothing of itself; what was at the destination has gone by then, unless it could not be removed.
  virtual bool copyTree(const std::string& source, const std::string& destination) const = 0;

  // Copies one regular file that an untrusted caller named into a place that only root can write. Refuses links,
  // special files, anything too large and an existing destination; leaves no partial copy.
  virtual bool stageFile(const std::string& source, const std::string& destination) const = 0;

  // Makes the directory and those above it. True when something is there afterwards, whatever it is.
  virtual bool makeDir(const std::string& path) const = 0;

  // The names of the immediate entries, hidden ones too, in no particular order; none on any error.
  virtual std::vector<std::string> entries(const std::string& path) const = 0;

  // Whole days since the item itself was last modified, rounded toward zero, negative for the future; nothing when it
  // cannot be read. Does not follow a link.
  virtual std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const = 0;

  // Makes the directory, or narrows an existing one, to the permission bits `mode`. False when that fails or
  // something other than a directory is there.
  virtual bool makePrivateDir(const std::string& path, int mode) const = 0;
};

}  // namespace halvo
