#include "sim/tools/Unpack.h"

#include <set>
#include <system_error>

#include "sim/tools/Archive.h"

namespace halvo::sim {
namespace {

using std::filesystem::path;

constexpr int kHow = ARCHIVE_EXTRACT_OWNER | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME |
                     ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT;

// "./Library/x/" and "Library/x" are one name; the root itself is the empty one.
path relativeName(const char* name) {
  const path normal = path(name).lexically_normal().relative_path();
  if (normal == ".") return {};
  return normal.has_filename() ? normal : normal.parent_path();
}

// An archive that ends too early has no bundles beyond its end; writing it finds the end by itself.
std::set<path> bundlesIn(std::string_view archiveBytes) {
  std::set<path> bundles;
  const ScopedReader reader = openCpio(archiveBytes);
  try {
    while (archive_entry* entry = nextEntry(reader.get())) {
      const path name = relativeName(archive_entry_pathname(entry));
      const path contents = name.parent_path();
      if (name.filename() == "Info.plist" && contents.filename() == "Contents") bundles.insert(contents.parent_path());
    }
  } catch (const ArchiveError&) {
    return bundles;
  }
  return bundles;
}

void removeEverythingIn(const path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) std::filesystem::remove_all(entry.path());
}

void copyContent(archive* reader, archive* disk) {
  const void* block = nullptr;
  size_t size = 0;
  la_int64_t offset = 0;
  for (;;) {
    const int result = archive_read_data_block(reader, &block, &size, &offset);
    if (result == ARCHIVE_EOF) return;
    requireDone(reader, result);
    if (archive_write_data_block(disk, block, size, offset) < ARCHIVE_WARN) throw ArchiveError(archiveProblem(disk));
  }
}

void writeEntry(archive* reader, archive_entry* entry, archive* disk) {
  requireDone(disk, archive_write_header(disk, entry));
  try {
    copyContent(reader, disk);
  } catch (const ArchiveError&) {
    // Gives the file the size that the archive announced, as a tool does that reserves the space first.
    archive_write_finish_entry(disk);
    throw;
  }
  requireDone(disk, archive_write_finish_entry(disk));
}

void writeAll(std::string_view archiveBytes, const path& root, std::vector<std::string>& paths) {
  const ScopedWriter disk(archive_write_disk_new());
  requireDone(disk.get(), archive_write_disk_set_options(disk.get(), kHow));
  const std::set<path> bundles = bundlesIn(archiveBytes);
  const ScopedReader reader = openCpio(archiveBytes);
  while (archive_entry* entry = nextEntry(reader.get())) {
    const path name = relativeName(archive_entry_pathname(entry));
    if (name.empty()) continue;  // the root is there, and its mode is not the package's to change
    paths.push_back(name);
    archive_entry_set_pathname(entry, (root / name).c_str());
    archive_entry_set_uid(entry, 0);
    archive_entry_set_gid(entry, 0);
    writeEntry(reader.get(), entry, disk.get());
    if (bundles.contains(name)) removeEverythingIn(root / name);
  }
  requireDone(disk.get(), archive_write_close(disk.get()));
}

}  // namespace

Unpacked unpack(std::string_view archiveBytes, const path& root) {
  Unpacked result;
  try {
    // The prefix has to be free of links, or the protection against following them would object to it.
    writeAll(archiveBytes, std::filesystem::canonical(root), result.paths);
  } catch (const std::runtime_error& problem) {
    result.problem = problem.what();
  }
  return result;
}

}  // namespace halvo::sim
