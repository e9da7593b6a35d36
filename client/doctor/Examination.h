// What halvo-app doctor saw: plain data, which collectors fill, and the judge and the printers read. Texts in it come
// from the disk and from the helper as they are, shortened and not made visible yet.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

using Seconds = std::chrono::seconds;

enum class Sight { present, absent, unreadable };  // unreadable, most often, for want of rights
enum class ItemKind { folder, file, link, other };

// One entry of a folder, not what a link points to.
struct Item {
  Sight sight = Sight::absent;
  ItemKind kind = ItemKind::other;
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  unsigned mode = 0;  // permission bits
  Seconds age{0};     // since it was last modified
  std::int64_t bytes = 0;
};

// What a part should be, and where its version stands.
struct PartRule {
  const char* path;
  ItemKind kind;
  unsigned mode;
  bool ownedByRoot;         // else owner and mode are the affair of whoever put it there
  const char* versionFile;  // below the path; empty for the part itself, null where it has no version
  const char* versionKey;   // in that property list
};

struct Part {
  PartRule rule;
  Item item = {};
  Sight versionSight = Sight::absent;
  std::string version = {};
};

struct Snapshot {
  std::string name = {};
  Item item = {};
  std::vector<std::string> missing = {};  // names of the parts that it does not hold
  Sight driverSight = Sight::absent;      // of the saved driver's version
  std::string driverVersion = {};
  std::int64_t bytes = 0;
  bool bytesAreAll = true;  // else it holds more than was counted
};

struct Snapshots {
  Sight sight = Sight::absent;
  std::vector<Snapshot> newest = {};  // newest first
  std::size_t others = 0;
};

// The last line of a log that tells of an operation that was refused or failed.
struct Refusal {
  std::string date = {};
  std::optional<Seconds> age = {};
  std::string message = {};
  bool overcome = false;  // an operation of the same kind succeeded afterwards
};

struct LogView {
  const char* path = "";
  Item item = {};
  Sight sight = Sight::absent;
  std::optional<Refusal> refusal = {};
};

enum class ServiceState { answers, unreachable, silent, strange };

struct Service {
  ServiceState state = ServiceState::unreachable;
  std::string explanation = {};  // when it does not answer as it should
  std::optional<std::int64_t> helperVersion = {};
  std::optional<std::int64_t> buildABI = {};
  std::optional<std::vector<std::int64_t>> graphicalUsers = {};
};

enum class RightState { sound, unsound, missing };  // missing, or not to be read

struct Tool {
  std::int64_t process = 0;
  std::string name = {};
  Seconds age{0};
};

struct Examination {
  std::vector<Part> parts = {};
  Snapshots snapshots = {};
  Item staging = {};
  std::vector<LogView> logs = {};
  std::optional<std::vector<Tool>> tools = {};   // of the helper; nothing when processes cannot be listed
  RightState rightBefore = RightState::missing;  // a helper that is started by the question writes it anew
  RightState rightAfter = RightState::missing;
  Service service = {};
};

}  // namespace halvo
