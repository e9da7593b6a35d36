#include "sim/tools/Archive.h"

namespace halvo::sim {

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

}  // namespace halvo::sim
