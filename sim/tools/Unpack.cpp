#include "sim/tools/Unpack.h"

#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <system_error>

#include "sim/tools/Archive.h"

namespace halvo::sim {
namespace {

using std::filesystem::path;

constexpr int kHow =
    ARCHIVE_EXTRACT_OWNER | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME | ARCHIVE_EXTRACT_SECURE_SYMLINKS;

// "./Library/x/" and "Library/x" are one name; the root itself is the empty one.
path relativeName(const char* name) {
  const path normal = path(name).lexically_normal();
  if (normal == ".") return {};
  return normal.has_filename() ? normal : normal.parent_path();
}

bool staysInside(const path& name) { return name.is_relative() && !std::ranges::count(name, path("..")); }

bool leadsThrough(const std::set<path>& links, const path& name) {
  for (path above = name.parent_path(); !above.empty(); above = above.parent_path()) {
    if (links.contains(above)) return true;
  }
  return false;
}

// A second name of a file that is in the archive already counts as extraordinary: no package of ours has one.
bool isOrdinary(archive_entry* entry) {
  const mode_t type = archive_entry_filetype(entry);
  return archive_entry_hardlink(entry) == nullptr && (type == S_IFREG || type == S_IFDIR || type == S_IFLNK);
}

// Answers why the entry may not be unpacked; empty when it may. Its name is judged as it stands in the archive:
// simplified, "a/../b" would look harmless.
std::string objection(archive_entry* entry, std::set<path>& links) {
  const path name(archive_entry_pathname(entry));
  if (!staysInside(name)) return name.string() + " leads out of the root";
  if (leadsThrough(links, relativeName(name.c_str()))) return name.string() + " leads through a link";
  if (!isOrdinary(entry)) return name.string() + " is something else than a file, a folder or a symbolic link";
  if (archive_entry_filetype(entry) == S_IFLNK) links.insert(relativeName(name.c_str()));
  return {};
}

// An archive that ends too early has no objectionable names beyond its end; writing it finds the end by itself.
std::string firstObjection(std::string_view archiveBytes) {
  std::set<path> links;
  const ScopedReader reader = openCpio(archiveBytes);
  try {
    while (archive_entry* entry = nextEntry(reader.get())) {
      if (std::string reason = objection(entry, links); !reason.empty()) return reason;
    }
  } catch (const ArchiveError&) {
    return {};
  }
  return {};
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
  const ScopedReader reader = openCpio(archiveBytes);
  while (archive_entry* entry = nextEntry(reader.get())) {
    const path name = relativeName(archive_entry_pathname(entry));
    if (name.empty()) continue;  // the root is there, and its mode is not the package's to change
    paths.push_back(name);
    archive_entry_set_pathname(entry, (root / name).c_str());
    writeEntry(reader.get(), entry, disk.get());
  }
  requireDone(disk.get(), archive_write_close(disk.get()));
}

}  // namespace

Unpacked unpack(std::string_view archiveBytes, const path& root) {
  Unpacked result;
  try {
    result.problem = firstObjection(archiveBytes);
    // The prefix has to be free of links, or the protection against following them would object to it.
    if (result.problem.empty()) writeAll(archiveBytes, std::filesystem::canonical(root), result.paths);
  } catch (const std::runtime_error& problem) {
    result.problem = problem.what();
  }
  return result;
}

}  // namespace halvo::sim
