// A file system that keeps nothing: it answers as the test prepared and records every call as one line, such as
// "copyTree /a -> /b" or "makePrivateDir /a 700" (the mode in octal).
#pragma once

#include <map>
#include <memory>
#include <set>

#include "HalvoHelper/system/PrivilegedFS.h"
#include "HalvoHelper/testing/CallRecorder.h"

namespace halvo {

class ScriptedPrivilegedFS final : public PrivilegedFS {
 public:
  explicit ScriptedPrivilegedFS(std::shared_ptr<CallRecorder> recorder = std::make_shared<CallRecorder>());

  bool exists(const std::string& path) const override;
  bool remove(const std::string& path) const override;
  bool removeTree(const std::string& path) const override;
  bool copyTree(const std::string& source, const std::string& destination) const override;
  bool stageFile(const std::string& source, const std::string& destination) const override;
  bool makeDir(const std::string& path) const override;
  std::vector<std::string> entries(const std::string& path) const override;
  std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const override;
  bool makePrivateDir(const std::string& path, int mode) const override;

  std::set<std::string> present;                             // what exists() finds; nothing else is there
  std::map<std::string, std::vector<std::string>> listings;  // what entries() gives; an unlisted path is unreadable
  std::map<std::string, std::int64_t> daysAgo;               // an unlisted path is unreadable
  std::set<std::string> failing;  // recorded lines of the changing calls that answer false; all others answer true

 private:
  [[nodiscard]] bool succeeds(const std::string& line) const;

  std::shared_ptr<CallRecorder> recorder_;
};

// The line that makePrivateDir() leaves.
[[nodiscard]] std::string makePrivateDirLine(const std::string& path, int mode);

}  // namespace halvo
