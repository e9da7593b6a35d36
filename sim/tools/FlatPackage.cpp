#include "sim/tools/FlatPackage.h"

#include <sys/stat.h>

#include <system_error>
#include <utility>

#include "sim/tools/Archive.h"

namespace halvo::sim {
namespace {

constexpr size_t kBlockSize = 64 * 1024;

ScopedReader openXar(const std::filesystem::path& file) {
  ScopedReader reader(archive_read_new());
  requireDone(reader.get(), archive_read_support_format_xar(reader.get()));
  requireDone(reader.get(), archive_read_open_filename(reader.get(), file.c_str(), kBlockSize));
  return reader;
}

std::string contentOf(archive* reader) {
  std::string content;
  takeContent(reader, [&content](const void* block, std::size_t size, la_int64_t /*offset*/) {
    content.append(static_cast<const char*>(block), size);
  });
  return content;
}

ScopedWriter createXar(const std::filesystem::path& file) {
  ScopedWriter writer(archive_write_new());
  requireDone(writer.get(), archive_write_set_format_xar(writer.get()));
  // The large members are compressed already.
  requireDone(writer.get(), archive_write_set_format_option(writer.get(), "xar", "compression", "none"));
  requireDone(writer.get(), archive_write_open_filename(writer.get(), file.c_str()));
  return writer;
}

void addMember(archive* writer, const std::string& name, const std::string& content) {
  const ScopedEntry entry(archive_entry_new());
  archive_entry_set_pathname(entry.get(), name.c_str());
  archive_entry_set_mode(entry.get(), S_IFREG | 0644);
  archive_entry_set_mtime(entry.get(), kPackageDate, 0);
  archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
  requireDone(writer, archive_write_header(writer, entry.get()));
  if (archive_write_data(writer, content.data(), content.size()) < 0) throw ArchiveError(archiveProblem(writer));
}

// Half a package must not stay where a whole one is expected; what is no file (a device) is not ours to remove.
void removeTorso(const std::filesystem::path& file) {
  std::error_code ignored;
  if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
}

}  // namespace

FlatPackage::FlatPackage(std::map<std::string, std::string> members) : members_(std::move(members)) {}

FlatPackage FlatPackage::read(const std::filesystem::path& file) {
  std::map<std::string, std::string> members;
  const ScopedReader reader = openXar(file);
  while (archive_entry* entry = nextEntry(reader.get())) {
    const char* name = archive_entry_pathname(entry);
    if (name == nullptr || archive_entry_filetype(entry) != S_IFREG) continue;
    members[name] = contentOf(reader.get());
  }
  return FlatPackage(std::move(members));
}

void FlatPackage::write(const std::filesystem::path& file) const {
  const ScopedWriter writer = createXar(file);
  try {
    for (const auto& [name, content] : members_) addMember(writer.get(), name, content);
    requireDone(writer.get(), archive_write_close(writer.get()));
  } catch (const ArchiveError&) {
    removeTorso(file);
    throw;
  }
}

std::optional<std::string_view> FlatPackage::member(const std::string& name) const {
  const auto found = members_.find(name);
  if (found == members_.end()) return std::nullopt;
  return found->second;
}

}  // namespace halvo::sim
