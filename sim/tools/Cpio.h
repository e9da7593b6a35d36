// Writes the archives inside a package.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

struct CpioEntry {
  enum class Kind { file, directory, link };
  std::string path;
  Kind kind = Kind::file;
  unsigned mode = 0644;
  std::string content{};  // of a file, or the target of a link
  unsigned owner = 0;     // user and group
};

// The date of everything in a package, so that the same inputs make the same bytes.
constexpr long long kPackageDate = 1770802212;  // 2026-02-11 09:30:12 UTC

// A cpio archive (the portable ASCII format) of the entries. Throws ArchiveError.
std::string cpioArchive(const std::vector<CpioEntry>& entries);

// The bytes compressed, as they stand in a package. Throws ArchiveError.
std::string gzipped(std::string_view bytes);

inline std::string gzippedCpio(const std::vector<CpioEntry>& entries) { return gzipped(cpioArchive(entries)); }

}  // namespace halvo::sim
