#include "sim/tools/Archive.h"

#include <sys/stat.h>

#include <array>
#include <set>
#include <stdexcept>

namespace halvo::sim {
namespace {

using std::filesystem::path;

constexpr int kHow = ARCHIVE_EXTRACT_OWNER | ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_TIME |
                     ARCHIVE_EXTRACT_SECURE_SYMLINKS | ARCHIVE_EXTRACT_SECURE_NODOTDOT;

la_ssize_t appendTo(archive* /*writer*/, void* destination, const void* bytes, size_t size) {
  static_cast<std::string*>(destination)->append(static_cast<const char*>(bytes), size);
  return static_cast<la_ssize_t>(size);
}

void openInMemory(archive* writer, std::string& destination) {
  requireDone(writer, archive_write_set_bytes_in_last_block(writer, 1));
  requireDone(writer, archive_write_open(writer, &destination, nullptr, appendTo, nullptr));
}

void writeContent(archive* writer, std::string_view content) {
  if (content.empty()) return;
  if (archive_write_data(writer, content.data(), content.size()) < 0) throw ArchiveError(archiveProblem(writer));
}

mode_t typeOf(CpioEntry::Kind kind) {
  constexpr std::array<mode_t, 3> kTypes = {S_IFREG, S_IFDIR, S_IFLNK};
  return kTypes.at(static_cast<std::size_t>(kind));
}

ScopedEntry headerOf(const CpioEntry& source) {
  ScopedEntry entry(archive_entry_new());
  archive_entry_set_pathname(entry.get(), source.path.c_str());
  archive_entry_set_mode(entry.get(), typeOf(source.kind) | source.mode);
  archive_entry_set_mtime(entry.get(), kPackageDate, 0);
  archive_entry_set_uid(entry.get(), source.owner);
  archive_entry_set_gid(entry.get(), source.owner);
  archive_entry_set_nlink(entry.get(), 1);
  const bool isFile = source.kind == CpioEntry::Kind::file;
  archive_entry_set_size(entry.get(), isFile ? static_cast<la_int64_t>(source.content.size()) : 0);
  if (source.kind == CpioEntry::Kind::link) archive_entry_set_symlink(entry.get(), source.content.c_str());
  return entry;
}

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
  takeContent(reader, [disk](const void* block, std::size_t size, la_int64_t offset) {
    if (archive_write_data_block(disk, block, size, offset) < ARCHIVE_WARN) throw ArchiveError(archiveProblem(disk));
  });
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

std::string archiveProblem(archive* handle) {
  const char* text = archive_error_string(handle);
  return text == nullptr ? "unknown error" : text;
}

void requireDone(archive* handle, int result) {
  if (result < ARCHIVE_WARN) throw ArchiveError(archiveProblem(handle));
}

ScopedReader openCpio(std::string_view bytes) {
  ScopedReader reader(archive_read_new());
  requireDone(reader.get(), archive_read_support_filter_gzip(reader.get()));
  requireDone(reader.get(), archive_read_support_format_cpio(reader.get()));
  requireDone(reader.get(), archive_read_open_memory(reader.get(), bytes.data(), bytes.size()));
  return reader;
}

archive_entry* nextEntry(archive* reader) {
  archive_entry* entry = nullptr;
  const int result = archive_read_next_header(reader, &entry);
  if (result == ARCHIVE_EOF) return nullptr;
  requireDone(reader, result);
  return entry;
}

std::string cpioArchive(const std::vector<CpioEntry>& entries) {
  std::string bytes;
  const ScopedWriter writer(archive_write_new());
  requireDone(writer.get(), archive_write_set_format_cpio_odc(writer.get()));
  openInMemory(writer.get(), bytes);
  for (const CpioEntry& source : entries) {
    requireDone(writer.get(), archive_write_header(writer.get(), headerOf(source).get()));
    if (source.kind == CpioEntry::Kind::file) writeContent(writer.get(), source.content);
  }
  requireDone(writer.get(), archive_write_close(writer.get()));
  return bytes;
}

std::string gzipped(std::string_view bytes) {
  std::string compressed;
  const ScopedWriter writer(archive_write_new());
  requireDone(writer.get(), archive_write_set_format_raw(writer.get()));
  requireDone(writer.get(), archive_write_add_filter_gzip(writer.get()));
  // The time of writing would make every package different.
  requireDone(writer.get(), archive_write_set_filter_option(writer.get(), "gzip", "timestamp", nullptr));
  openInMemory(writer.get(), compressed);
  const ScopedEntry entry(archive_entry_new());
  archive_entry_set_filetype(entry.get(), S_IFREG);
  requireDone(writer.get(), archive_write_header(writer.get(), entry.get()));
  writeContent(writer.get(), bytes);
  requireDone(writer.get(), archive_write_close(writer.get()));
  return compressed;
}

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
