// Puts the files of a package's archive on disk.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

struct Unpacked {
  std::vector<std::string> paths;  // what the archive brought, relative to the root, in its order
  std::string problem;             // why it stopped; empty when everything is on disk
};

// Unpacks a gzip'd cpio archive below `root` with its modes and dates; everything belongs to root:wheel, if the owner
// can be set. A bundle (a folder with Contents/Info.plist) that lies there is replaced as a whole, other files that the
// archive does not bring stay. No name leads out of `root` or through a link. When the archive ends too early, what was
// read is on disk; the file it ends in has its full size and the wrong content.
Unpacked unpack(std::string_view archiveBytes, const std::filesystem::path& root);

}  // namespace halvo::sim
