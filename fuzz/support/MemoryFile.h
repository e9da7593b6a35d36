// A regular file that lives in memory only.
#pragma once

#include <string>
#include <string_view>

namespace halvo::fuzz {

class MemoryFile {
 public:
  MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  // A path under which it can be opened.
  [[nodiscard]] const std::string& path() const { return path_; }

  // Replaces what is in it.
  void write(std::string_view bytes) const;

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace halvo::fuzz
