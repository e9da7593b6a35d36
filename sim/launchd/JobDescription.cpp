#include "sim/launchd/JobDescription.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <iterator>

#include "sim/platform/PropertyLists.h"

namespace halvo::sim {
namespace {

constexpr std::size_t kMaxPlistBytes = 1024UL * 1024;
// Together with the folder's name it has to fit into the address of a Unix socket.
constexpr std::size_t kMaxServiceName = 80;
constexpr std::uint64_t kMaxSeconds = 86400;

using Node = XMLPropertyListNode;
using Kind = Node::Kind;

bool usableServiceName(const std::string& name) {
  return !name.empty() && name.size() <= kMaxServiceName && name != "." && name != ".." &&
         name.find('/') == std::string::npos && name.find(':') == std::string::npos;
}

// Builds the description key by key and keeps the first thing that is wrong.
class Reader {
 public:
  Reader(const Node& root, const std::filesystem::path& plist) : root_(root) { job_.plist = plist; }

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

  // Null when the list has no such key. Of a repeated one the last value counts.
  [[nodiscard]] const Node* find(const char* key) const {
    const Node* found = nullptr;
    for (std::size_t i = 0; i < root_.children.size(); i += 2) {
      if (root_.children[i].text == key) found = &root_.children[i + 1];
    }
    return found;
  }

  [[nodiscard]] std::string text(const char* key) const {
    const Node* node = find(key);
    return node != nullptr && node->kind == Kind::string ? node->text : "";
  }

  void readLabel() {
    job_.label = text("Label");
    if (job_.label.empty() || job_.label.find('/') != std::string::npos) refuse("Label is missing or unusable.");
  }

  void readProgram() {
    readArguments();
    if (const std::string program = text("Program"); !program.empty()) {
      job_.program = program;
    } else if (const std::string inBundle = text("BundleProgram"); !inBundle.empty()) {
      job_.program = bundleRoot() / inBundle;
    } else if (!job_.arguments.empty()) {
      job_.program = job_.arguments.front();
    }
    if (!job_.program.is_absolute()) refuse("Program, BundleProgram or ProgramArguments must name a program.");
    if (job_.arguments.empty()) job_.arguments.push_back(job_.program.string());
  }

  void readArguments() {
    const Node* list = find("ProgramArguments");
    if (list == nullptr) return;
    if (list->kind != Kind::array) return refuse("ProgramArguments is not an array.");
    for (const Node& argument : list->children) {
      if (argument.kind != Kind::string) return refuse("ProgramArguments holds something that is not a string.");
      job_.arguments.push_back(argument.text);
    }
  }

  // X.app of X.app/Contents/Library/LaunchDaemons/NAME.plist.
  [[nodiscard]] std::filesystem::path bundleRoot() const {
    return job_.plist.parent_path().parent_path().parent_path().parent_path();
  }

  void readServices() {
    const Node* services = find("MachServices");
    if (services == nullptr) return;
    if (services->kind != Kind::dictionary) return refuse("MachServices is not a dictionary.");
    for (std::size_t i = 0; i < services->children.size(); i += 2) {
      job_.machServices.push_back(services->children[i].text);
    }
    if (!std::ranges::all_of(job_.machServices, usableServiceName)) refuse("MachServices holds an unusable name.");
  }

  // Absent counts as false; any other kind of value as unusable.
  bool readFlag(const char* key) {
    const Node* node = find(key);
    if (node == nullptr) return false;
    if (node->kind != Kind::yes && node->kind != Kind::no) refuse(std::string(key) + " must be a boolean here.");
    return node->kind == Kind::yes;
  }

  std::chrono::seconds readSeconds(const char* key, std::chrono::seconds standard) {
    const Node* node = find(key);
    if (node == nullptr) return standard;
    std::uint64_t seconds = 0;
    const char* const end = node->text.data() + node->text.size();
    const auto read = std::from_chars(node->text.data(), end, seconds);
    if (node->kind != Kind::integer || read.ptr != end) refuse(std::string(key) + " is not a number.");
    return std::chrono::seconds(std::min<std::uint64_t>(seconds, kMaxSeconds));
  }

  const Node& root_;
  JobDescription job_;
  std::string problem_;
};

// Whether only root, or whoever runs this launchd, can change what is there.
bool belongsToRoot(const std::filesystem::path& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return true;
  return (info.st_uid == 0 || info.st_uid == ::geteuid()) && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace

std::variant<JobDescription, UnusableJob> readJobDescription(const std::filesystem::path& plist) {
  if (!plist.is_absolute()) return UnusableJob{plist.string() + ": the path must be absolute."};
  std::ifstream file(plist, std::ios::binary);
  if (!file) return UnusableJob{plist.string() + ": the property list cannot be read."};
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.size() > kMaxPlistBytes) return UnusableJob{plist.string() + ": the property list is too large."};

  const auto root = readXMLPropertyList(bytes);
  if (!root || root->kind != Kind::dictionary) {
    return UnusableJob{plist.string() + ": not a property list with a dictionary."};
  }
  return Reader(*root, plist).read();
}

std::optional<std::string> unsafeDaemon(const JobDescription& job) {
  for (const auto& path : {job.plist, job.program}) {
    if (!belongsToRoot(path)) return path.string() + ": Path had bad ownership/permissions";
  }
  return std::nullopt;
}

}  // namespace halvo::sim
