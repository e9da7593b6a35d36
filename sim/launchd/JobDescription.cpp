#include "sim/launchd/JobDescription.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>

namespace halvo::sim {
namespace {

constexpr std::size_t kMaxPlistBytes = 1024UL * 1024;
// Together with the folder's name it has to fit into the address of a Unix socket.
constexpr std::size_t kMaxServiceName = 80;
constexpr std::uint64_t kMaxSeconds = 86400;

struct PlistReleaser {
  void operator()(plist_t node) const { plist_free(node); }
};
using ScopedPlist = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistReleaser>;

struct FreeReleaser {
  void operator()(void* memory) const { std::free(memory); }
};

std::optional<std::string> text(plist_t node) {
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  std::uint64_t length = 0;
  const char* bytes = plist_get_string_ptr(node, &length);
  return std::string(bytes, length);
}

// Absent counts as false; any other kind of value as unusable.
std::optional<bool> flag(plist_t dictionary, const char* key) {
  plist_t node = plist_dict_get_item(dictionary, key);
  if (node == nullptr) return false;
  if (plist_get_node_type(node) != PLIST_BOOLEAN) return std::nullopt;
  std::uint8_t value = 0;
  plist_get_bool_val(node, &value);
  return value != 0;
}

bool usableServiceName(const std::string& name) {
  return !name.empty() && name.size() <= kMaxServiceName && name != "." && name != ".." &&
         name.find('/') == std::string::npos && name.find(':') == std::string::npos;
}

// Builds the description key by key and keeps the first thing that is wrong.
class Reader {
 public:
  Reader(plist_t root, const std::filesystem::path& plist) : root_(root) { job_.plist = plist; }

  std::variant<JobDescription, UnusableJob> read() {
    readLabel();
    readProgram();
    readServices();
    job_.keepAlive = readFlag("KeepAlive");
    job_.runAtLoad = readFlag("RunAtLoad");
    job_.throttleInterval = readSeconds("ThrottleInterval", job_.throttleInterval);
    job_.exitTimeOut = readSeconds("ExitTimeOut", job_.exitTimeOut);
    if (!problem_.empty()) return UnusableJob{job_.plist.string() + ": " + problem_};
    return job_;
  }

 private:
  void refuse(const std::string& problem) {
    if (problem_.empty()) problem_ = problem;
  }

  void readLabel() {
    job_.label = text(plist_dict_get_item(root_, "Label")).value_or("");
    if (job_.label.empty() || job_.label.find('/') != std::string::npos) refuse("Label is missing or unusable.");
  }

  void readProgram() {
    readArguments();
    if (const auto program = text(plist_dict_get_item(root_, "Program"))) {
      job_.program = *program;
    } else if (const auto inBundle = text(plist_dict_get_item(root_, "BundleProgram"))) {
      job_.program = bundleRoot() / *inBundle;
    } else if (!job_.arguments.empty()) {
      job_.program = job_.arguments.front();
    }
    if (!job_.program.is_absolute()) refuse("Program, BundleProgram or ProgramArguments must name a program.");
    if (job_.arguments.empty()) job_.arguments.push_back(job_.program.string());
  }

  void readArguments() {
    plist_t list = plist_dict_get_item(root_, "ProgramArguments");
    if (list == nullptr) return;
    if (plist_get_node_type(list) != PLIST_ARRAY) return refuse("ProgramArguments is not an array.");
    for (std::uint32_t i = 0; i < plist_array_get_size(list); ++i) {
      const auto argument = text(plist_array_get_item(list, i));
      if (!argument) return refuse("ProgramArguments holds something that is not a string.");
      job_.arguments.push_back(*argument);
    }
  }

  // X.app of X.app/Contents/Library/LaunchDaemons/NAME.plist.
  [[nodiscard]] std::filesystem::path bundleRoot() const {
    return job_.plist.parent_path().parent_path().parent_path().parent_path();
  }

  void readServices() {
    plist_t services = plist_dict_get_item(root_, "MachServices");
    if (services == nullptr) return;
    if (plist_get_node_type(services) != PLIST_DICT) return refuse("MachServices is not a dictionary.");
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(services, &iterator);
    const std::unique_ptr<void, FreeReleaser> owner(iterator);
    while (true) {
      char* key = nullptr;
      plist_t value = nullptr;
      plist_dict_next_item(services, iterator, &key, &value);
      const std::unique_ptr<void, FreeReleaser> keyOwner(key);
      if (key == nullptr) break;
      job_.machServices.emplace_back(key);
    }
    if (!std::ranges::all_of(job_.machServices, usableServiceName)) refuse("MachServices holds an unusable name.");
  }

  bool readFlag(const char* key) {
    const auto value = flag(root_, key);
    if (!value) refuse(std::string(key) + " must be a boolean here.");
    return value.value_or(false);
  }

  std::chrono::seconds readSeconds(const char* key, std::chrono::seconds standard) {
    plist_t node = plist_dict_get_item(root_, key);
    if (node == nullptr) return standard;
    if (plist_get_node_type(node) != PLIST_UINT) {
      refuse(std::string(key) + " is not a number.");
      return standard;
    }
    std::uint64_t seconds = 0;
    plist_get_uint_val(node, &seconds);
    return std::chrono::seconds(std::min<std::uint64_t>(seconds, kMaxSeconds));
  }

  plist_t root_;
  JobDescription job_;
  std::string problem_;
};

}  // namespace

std::variant<JobDescription, UnusableJob> readJobDescription(const std::filesystem::path& plist) {
  if (!plist.is_absolute()) return UnusableJob{plist.string() + ": the path must be absolute."};
  std::ifstream file(plist, std::ios::binary);
  if (!file) return UnusableJob{plist.string() + ": the property list cannot be read."};
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.size() > kMaxPlistBytes) return UnusableJob{plist.string() + ": the property list is too large."};

  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
  const ScopedPlist owner(root);
  if (root == nullptr || plist_get_node_type(root) != PLIST_DICT) {
    return UnusableJob{plist.string() + ": not a property list with a dictionary."};
  }
  return Reader(root, plist).read();
}

}  // namespace halvo::sim
