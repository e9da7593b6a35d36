#include "sim/harness/TreeSnapshot.h"

#include <array>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

namespace halvo::sim {
namespace {

// FNV-1a with 64 bits.
class Hash {
 public:
  void add(std::string_view bytes) {
    for (const char byte : bytes) value_ = (value_ ^ static_cast<unsigned char>(byte)) * kPrime;
  }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  static constexpr std::uint64_t kPrime = 0x100000001b3;
  std::uint64_t value_ = 0xcbf29ce484222325;
};

std::uint64_t hashOfFile(const std::filesystem::path& file) {
  Hash hash;
  std::ifstream in(file, std::ios::binary);
  std::array<char, 65536> chunk{};
  while (in.read(chunk.data(), chunk.size()) || in.gcount() > 0) {
    hash.add({chunk.data(), static_cast<std::size_t>(in.gcount())});
  }
  return hash.value();
}

FileState::Kind kindOf(std::filesystem::file_type type) {
  if (type == std::filesystem::file_type::regular) return FileState::Kind::file;
  if (type == std::filesystem::file_type::directory) return FileState::Kind::directory;
  if (type == std::filesystem::file_type::symlink) return FileState::Kind::link;
  return FileState::Kind::other;
}

std::optional<FileState> stateOf(const std::filesystem::path& host) {
  std::error_code error;
  const auto status = std::filesystem::symlink_status(host, error);
  if (error || !std::filesystem::exists(status)) return std::nullopt;
  FileState state{.kind = kindOf(status.type()), .mode = static_cast<unsigned>(status.permissions())};
  if (state.kind == FileState::Kind::file) {
    state.size = std::filesystem::file_size(host, error);
    state.content = hashOfFile(host);
  } else if (state.kind == FileState::Kind::link) {
    Hash hash;
    hash.add(std::filesystem::read_symlink(host, error).native());
    state.content = hash.value();
  }
  return error ? std::nullopt : std::optional(state);
}

}  // namespace

void addToSnapshot(TreeSnapshot& snapshot, const std::filesystem::path& host, const std::string& inside) {
  const auto state = stateOf(host);
  if (!state) return;
  snapshot[inside] = *state;
  if (state->kind != FileState::Kind::directory) return;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(host, error)) {
    addToSnapshot(snapshot, entry.path(),
                  inside + (inside.ends_with('/') ? "" : "/") + entry.path().filename().string());
  }
}

std::vector<TreeChange> changesBetween(const TreeSnapshot& before, const TreeSnapshot& after) {
  std::map<std::string, TreeChange::Kind> changes;
  for (const auto& [path, state] : before) {
    const auto now = after.find(path);
    if (now == after.end()) {
      changes[path] = TreeChange::Kind::removed;
    } else if (now->second != state) {
      changes[path] = TreeChange::Kind::changed;
    }
  }
  for (const auto& [path, state] : after) {
    if (!before.contains(path)) changes[path] = TreeChange::Kind::added;
  }
  std::vector<TreeChange> list;
  for (const auto& [path, kind] : changes) list.push_back({kind, path});
  return list;
}

std::string describe(const TreeChange& change) {
  switch (change.kind) {
    case TreeChange::Kind::added:
      return "added " + change.path;
    case TreeChange::Kind::removed:
      return "removed " + change.path;
    case TreeChange::Kind::changed:
      return "changed " + change.path;
  }
  return change.path;
}

}  // namespace halvo::sim
