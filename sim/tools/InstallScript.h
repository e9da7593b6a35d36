// Runs the scripts that a package brings.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// The Scripts archive in a folder of its own in the machine's /private/tmp, for as long as this lives.
class InstallScripts {
 public:
  InstallScripts(std::string_view archive, const std::filesystem::path& root);
  InstallScripts(const InstallScripts&) = delete;
  InstallScripts& operator=(const InstallScripts&) = delete;
  ~InstallScripts();

  // Runs the script of that name in the folder. Blocks until it has ended; what it prints goes to
  // /private/var/log/install.log. Answers its exit status (the signal's number when a signal ended it), 0 when there is
  // no such script, and -1 when it could not be run or the archive could not be unpacked.
  [[nodiscard]] int run(const std::string& name, const std::vector<std::string>& arguments) const;

 private:
  std::filesystem::path root_;
  std::filesystem::path folder_;
  bool complete_ = false;
};

}  // namespace halvo::sim
