// What a launchd property list asks for.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace halvo::sim {

struct JobDescription {
  std::string label;
  std::filesystem::path plist;
  std::filesystem::path program;          // absolute
  std::vector<std::string> arguments;     // argv, the name under [0] included
  std::vector<std::string> machServices;  // names that launchd answers for and that start the job on demand
  bool keepAlive = false;
  bool runAtLoad = false;
  std::chrono::seconds throttleInterval{10};  // simulated time from one start to the next
  // How long the process may take to end once it was asked to; 0: for ever. Real time, whatever the clock rate: a busy
  // host must not turn a polite end into a kill.
  std::chrono::seconds exitTimeOut{20};
  bool operator==(const JobDescription&) const = default;
};

// Why a property list describes no job; a sentence for people.
struct UnusableJob {
  std::string reason;
  bool operator==(const UnusableJob&) const = default;
};

// Reads an XML list: Label, Program, ProgramArguments, BundleProgram (which is relative to the bundle that holds the
// property list in Contents/Library/LaunchDaemons), MachServices, KeepAlive and RunAtLoad (booleans), ThrottleInterval,
// ExitTimeOut. Other keys are ignored. Whether the program exists is seen only when the job starts, as with the real
// launchd.
std::variant<JobDescription, UnusableJob> readJobDescription(const std::filesystem::path& plist);

// A daemon runs as root: neither what describes it nor its program may be in anybody else's hands. Nothing where that
// is so.
std::optional<std::string> unsafeDaemon(const JobDescription& job);

}  // namespace halvo::sim
