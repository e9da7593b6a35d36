#include "sim/support/CodeSignature.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {
namespace {

using Json = nlohmann::json;

// The file ends with the signature as JSON, the length of that text, and a mark.
constexpr std::string_view kMark = "halvo-sim-signed";

// The bytes of an open file; none of what is no file.
class MappedFile {
 public:
  explicit MappedFile(int descriptor) {
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size == 0) return;
    const auto size = static_cast<std::size_t>(info.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (bytes != MAP_FAILED) bytes_ = {static_cast<const char*>(bytes), size};
  }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile() {
    if (!bytes_.empty()) ::munmap(const_cast<char*>(bytes_.data()), bytes_.size());
  }
  [[nodiscard]] std::string_view bytes() const { return bytes_; }

 private:
  std::string_view bytes_;
};

struct Block {
  std::string_view code;  // what stands before it
  Json claims;
};

std::optional<Block> findBlock(std::string_view file) {
  std::uint32_t length = 0;
  if (!file.ends_with(kMark) || file.size() < kMark.size() + sizeof length) return std::nullopt;
  file.remove_suffix(kMark.size() + sizeof length);
  std::memcpy(&length, file.data() + file.size(), sizeof length);
  if (length > file.size()) return std::nullopt;
  const std::string_view code = file.substr(0, file.size() - length);
  return Block{code, Json::parse(file.substr(code.size()), nullptr, false)};
}

// It need not withstand anybody who wants two programs with the same one.
std::uint64_t digestOf(std::string_view code) { return std::hash<std::string_view>()(code); }

std::string makeBlock(const CodeSignature& signature, std::uint64_t digest) {
  const Json claims = {{"identifier", signature.identifier},
                       {"team", signature.teamIdentifier},
                       {"anchor", signature.anchor},
                       {"digest", digest}};
  std::string bytes = claims.dump(-1, ' ', false, Json::error_handler_t::replace);
  const auto length = static_cast<std::uint32_t>(bytes.size());
  bytes.append(reinterpret_cast<const char*>(&length), sizeof length);
  return bytes.append(kMark);
}

}  // namespace

bool signExecutable(const std::filesystem::path& executable, const CodeSignature& signature) {
  const UniqueDescriptor file(::open(executable.c_str(), O_RDWR | O_CLOEXEC));
  if (!file.valid()) return false;
  const MappedFile mapped(file.get());
  const auto previous = findBlock(mapped.bytes());
  const std::string_view code = previous ? previous->code : mapped.bytes();
  const std::string block = makeBlock(signature, digestOf(code));
  const auto start = static_cast<off_t>(code.size());
  return ::ftruncate(file.get(), start) == 0 &&
         ::pwrite(file.get(), block.data(), block.size(), start) == static_cast<ssize_t>(block.size());
}

std::optional<CodeSignature> readCodeSignature(int descriptor) try {
  const MappedFile mapped(descriptor);
  const auto block = findBlock(mapped.bytes());
  if (!block) return std::nullopt;
  return CodeSignature{.identifier = block->claims.at("identifier").get<std::string>(),
                       .teamIdentifier = block->claims.at("team").get<std::string>(),
                       .anchor = block->claims.at("anchor").get<std::string>()};
} catch (const Json::exception&) {
  return std::nullopt;
}

bool signedCodeIsIntact(int descriptor) {
  const MappedFile mapped(descriptor);
  const auto block = findBlock(mapped.bytes());
  return block && block->claims.is_object() && block->claims.value("digest", std::uint64_t{0}) == digestOf(block->code);
}

}  // namespace halvo::sim
