// The archives of packages, by libarchive: making them, reading them, and putting their files on disk.
#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

struct ReadCloser {
  void operator()(archive* reader) const { archive_read_free(reader); }
};
struct WriteCloser {
  void operator()(archive* writer) const { archive_write_free(writer); }
};
struct EntryCloser {
  void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using ScopedReader = std::unique_ptr<archive, ReadCloser>;
using ScopedWriter = std::unique_ptr<archive, WriteCloser>;
using ScopedEntry = std::unique_ptr<archive_entry, EntryCloser>;

class ArchiveError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Why the last call on `handle` failed.
std::string archiveProblem(archive* handle);

// Throws ArchiveError when `result` says that the call failed. A warning (a name that needs another character set, an
// owner that this machine does not know) is not a failure.
void requireDone(archive* handle, int result);

// A reader over a gzip'd cpio archive in memory; `bytes` must outlive it. Throws ArchiveError when it is none.
ScopedReader openCpio(std::string_view bytes);

// The next header; nullptr at the end of the archive. Throws ArchiveError when the archive is damaged.
archive_entry* nextEntry(archive* reader);

// Hands over the content of the entry at which the reader is, block by block with where it belongs: archive_read_data()
// carries the offset at the end of one entry over to the next, and would put that many zeros before its content. Throws
// ArchiveError when the archive is damaged.
template <typename Take>
void takeContent(archive* reader, Take take) {
  const void* block = nullptr;
  std::size_t size = 0;
  la_int64_t offset = 0;
  for (;;) {
    const int result = archive_read_data_block(reader, &block, &size, &offset);
    if (result == ARCHIVE_EOF) return;
    requireDone(reader, result);
    take(block, size, offset);
  }
}

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
