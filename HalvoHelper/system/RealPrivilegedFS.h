// The real file system. Stateless.
#pragma once

#include "HalvoHelper/system/PrivilegedFS.h"

namespace halvo {

class RealPrivilegedFS final : public PrivilegedFS {
 public:
  // The largest file that stageFile() takes: 256 MiB.
  static constexpr std::int64_t stageFileMaxBytes = 268'435'456;

  bool exists(const std::string& path) const override;
  bool remove(const std::string& path) const override;
  bool removeTree(const std::string& path) const override;
  // Keeps permissions, owners, times and extended attributes (copyfile(3)).
  bool copyTree(const std::string& source, const std::string& destination) const override;
  // Constant memory, whatever the size: one buffer of 1 MiB.
  bool stageFile(const std::string& source, const std::string& destination) const override;
  bool makeDir(const std::string& path) const override;
  std::vector<std::string> entries(const std::string& path) const override;
  std::optional<std::int64_t> modifiedDaysAgo(const std::string& path) const override;
  bool makePrivateDir(const std::string& path, int mode) const override;
};

}  // namespace halvo
