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

// Unpacks a gzip'd cpio archive below `root`, with owners, modes and dates; an owner that cannot be set is no problem.
// Everything is judged first: an absolute name, one with "..", one that leads through a link, or something else than a
// file, a folder or a symbolic link, and nothing at all is written. A link that lies on disk is not followed either.
// When the archive ends too early, what was read is on disk; the file it ends in has its full size and the wrong
// content.
Unpacked unpack(std::string_view archiveBytes, const std::filesystem::path& root);

}  // namespace halvo::sim
