#include "sim/harness/TreeSnapshot.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <cstring>
#include <functional>
#include <optional>
#include <string_view>
#include <system_error>

#include "sim/support/Files.h"

namespace halvo::sim {
namespace {

std::uint64_t hashOf(std::string_view bytes) { return std::hash<std::string_view>()(bytes); }

std::string valueOf(const std::filesystem::path& path, const char* attribute) {
  std::string value(std::size_t{64} * 1024, '\0');
  const ssize_t size = ::lgetxattr(path.c_str(), attribute, value.data(), value.size());
  value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return value;
}

std::uint64_t hashOfAttributes(const std::filesystem::path& path) {
  std::string names(std::size_t{64} * 1024, '\0');
  const ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
  names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  // A file system lists them in any order.
  std::map<std::string, std::string> attributes;
  for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
    attributes[&names[at]] = valueOf(path, &names[at]);
  }
  std::string all;
  for (const auto& [name, value] : attributes) all += name + "=" + value + std::string(1, '\0');
  return hashOf(all);
}

FileState::Kind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileState::Kind::file;
  if (S_ISDIR(mode)) return FileState::Kind::directory;
  if (S_ISLNK(mode)) return FileState::Kind::link;
  return FileState::Kind::other;
}

std::optional<FileState> stateOf(const std::filesystem::path& host) {
  constexpr mode_t kPermissions = 07777;
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  struct stat info {};
  if (::lstat(host.c_str(), &info) != 0) return std::nullopt;
  FileState state{.kind = kindOf(info.st_mode),
                  .mode = info.st_mode & kPermissions,
                  .owner = info.st_uid,
                  .group = info.st_gid,
                  .attributes = hashOfAttributes(host)};
  std::error_code error;
  if (state.kind == FileState::Kind::file) {
    state.size = static_cast<std::uintmax_t>(info.st_size);
    state.modified = info.st_mtim.tv_sec * kNanoseconds + info.st_mtim.tv_nsec;
    state.content = hashOf(wholeFile(host));
  } else if (state.kind == FileState::Kind::link) {
    state.content = hashOf(std::filesystem::read_symlink(host, error).native());
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
  constexpr std::array kWords = {"added ", "removed ", "changed "};
  return kWords.at(static_cast<std::size_t>(change.kind)) + change.path;
}

}  // namespace halvo::sim
