#include "sim/support/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <system_error>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {
namespace {

// Differs between threads and, through the process number, between processes.
std::filesystem::path scratchName(const std::filesystem::path& file) {
  static std::atomic<unsigned> counter{0};
  return file.string() + "." + std::to_string(::getpid()) + "." + std::to_string(counter++) + ".new";
}

}  // namespace

std::string wholeFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();  // unlike the buffer's iterators, this takes an error for the end
  return std::move(bytes).str();
}

bool writeWhole(const std::filesystem::path& file, std::string_view text) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  return !out.fail();
}

bool replaceFile(const std::filesystem::path& file, std::string_view text, std::optional<unsigned> mode) {
  const std::filesystem::path scratch = scratchName(file);
  std::error_code error;
  if (writeWhole(scratch, text)) {
    if (mode) std::filesystem::permissions(scratch, std::filesystem::perms(*mode), error);
    if (!error) std::filesystem::rename(scratch, file, error);
    if (!error) return true;
  }
  std::filesystem::remove(scratch, error);
  return false;
}

bool appendLine(const std::filesystem::path& file, std::string_view line) {
  constexpr mode_t kEveryUserWrites = 0666;
  const UniqueDescriptor log(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kEveryUserWrites));
  if (!log.valid()) return false;
  // Whoever made the file opens it for the others, whom the umask would shut out; nobody else may, or has to.
  static_cast<void>(::fchmod(log.get(), kEveryUserWrites) == 0);
  const std::string text = std::string(line) + "\n";
  return ::write(log.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

}  // namespace halvo::sim
