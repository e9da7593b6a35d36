#include "sim/support/CodeSignature.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "HalvoHelper/system/UniqueDescriptor.h"

namespace halvo::sim {
namespace {

// The file ends with the signature as JSON, the length of that text, and a mark.
constexpr std::string_view kMark = "halvo-sim-signed";
constexpr off_t kLongestText = 64 * 1024;

struct Trailer {
  std::uint32_t textLength = 0;
  std::array<char, kMark.size()> mark{};
};
static_assert(sizeof(Trailer) == sizeof(std::uint32_t) + kMark.size());

struct Block {
  off_t start = 0;
  std::string text;
};

bool readAt(int descriptor, void* buffer, std::size_t size, off_t offset) {
  return ::pread(descriptor, buffer, size, offset) == static_cast<ssize_t>(size);
}

bool writeAt(int descriptor, const std::string& bytes, off_t offset) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        ::pwrite(descriptor, bytes.data() + written, bytes.size() - written, offset + static_cast<off_t>(written));
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

std::optional<Block> findBlock(int descriptor) {
  struct stat info {};
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  const off_t trailerStart = info.st_size - static_cast<off_t>(sizeof(Trailer));
  Trailer trailer;
  if (trailerStart < 0 || !readAt(descriptor, &trailer, sizeof trailer, trailerStart)) return std::nullopt;
  if (std::string_view(trailer.mark.data(), trailer.mark.size()) != kMark) return std::nullopt;
  if (trailer.textLength > trailerStart || trailer.textLength > kLongestText) return std::nullopt;

  Block block{trailerStart - trailer.textLength, std::string(trailer.textLength, '\0')};
  if (!readAt(descriptor, block.text.data(), block.text.size(), block.start)) return std::nullopt;
  return block;
}

// Of the first `size` bytes. It need not withstand anybody who wants two programs with the same one.
std::uint64_t digestOf(int descriptor, off_t size) {
  const auto length = static_cast<std::size_t>(size);
  void* bytes = length == 0 ? MAP_FAILED : ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (bytes == MAP_FAILED) return 0;
  const std::uint64_t digest = std::hash<std::string_view>()({static_cast<const char*>(bytes), length});
  ::munmap(bytes, length);
  return digest;
}

std::string makeBlock(const CodeSignature& signature, std::uint64_t digest) {
  const nlohmann::json json = {{"identifier", signature.identifier},
                               {"team", signature.teamIdentifier},
                               {"anchor", signature.anchor},
                               {"digest", digest}};
  std::string bytes = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  Trailer trailer;
  trailer.textLength = static_cast<std::uint32_t>(bytes.size());
  std::memcpy(trailer.mark.data(), kMark.data(), kMark.size());
  bytes.append(reinterpret_cast<const char*>(&trailer), sizeof trailer);
  return bytes;
}

std::optional<std::string> textMember(const nlohmann::json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

}  // namespace

bool signExecutable(const std::filesystem::path& executable, const CodeSignature& signature) {
  const UniqueDescriptor file(::open(executable.c_str(), O_RDWR | O_CLOEXEC));
  struct stat info {};
  if (!file.valid() || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  const auto previous = findBlock(file.get());
  const off_t start = previous ? previous->start : info.st_size;
  const std::string block = makeBlock(signature, digestOf(file.get(), start));
  return ::ftruncate(file.get(), start) == 0 && writeAt(file.get(), block, start);
}

std::optional<CodeSignature> readCodeSignature(int descriptor) {
  const auto block = findBlock(descriptor);
  if (!block) return std::nullopt;
  const auto json = nlohmann::json::parse(block->text, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  auto identifier = textMember(json, "identifier");
  auto team = textMember(json, "team");
  auto anchor = textMember(json, "anchor");
  if (!identifier || !team || !anchor) return std::nullopt;
  return CodeSignature{std::move(*identifier), std::move(*team), std::move(*anchor)};
}

bool signedCodeIsIntact(int descriptor) {
  const auto block = findBlock(descriptor);
  if (!block) return false;
  const auto json = nlohmann::json::parse(block->text, nullptr, false);
  return json.is_object() && json.value("digest", std::uint64_t{0}) == digestOf(descriptor, block->start);
}

}  // namespace halvo::sim
