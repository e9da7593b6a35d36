#include "client/doctor/SnapshotsCollector.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/text/Text.h"
#include "client/doctor/PartsCollector.h"

namespace halvo {
namespace {

constexpr std::size_t kShown = 5;
constexpr std::size_t kMostNames = 10'000;

std::string pathOf(const std::string& name) { return std::string(kInstallRollbackRoot) + "/" + name; }

// Names are Unix seconds: the larger, the newer. Others sort behind them.
bool isNewer(const std::string& a, const std::string& b) {
  return std::pair(halvoParseDecimal(a), a) > std::pair(halvoParseDecimal(b), b);
}

Snapshot collectSnapshot(const Disk& disk, const std::string& name) {
  const std::string path = pathOf(name);
  Snapshot snapshot{.name = name, .item = disk.look(path), .missing = {}, .driverVersion = {}};
  if (snapshot.item.kind != ItemKind::folder) return snapshot;
  const auto [bytes, isAll] = disk.sizeOf(path);
  snapshot.bytes = bytes;
  snapshot.bytesAreAll = isAll;
  const std::string inside = path + "/";
  for (const std::string part : kInstalledParts) {
    const std::string saved = halvoLastPathComponent(part);
    if (disk.look(inside + saved).sight == Sight::absent) snapshot.missing.push_back(saved);
  }
  auto [sight, version] = readDriverVersion(disk, inside + halvoLastPathComponent(kDriverBundlePath));
  snapshot.driverSight = sight;
  snapshot.driverVersion = std::move(version);
  return snapshot;
}

}  // namespace

Snapshots collectSnapshots(const Disk& disk) {
  Names found = disk.names(kInstallRollbackRoot, kMostNames);
  std::ranges::sort(found.names, isNewer);
  Snapshots snapshots{.sight = found.sight, .newest = {}};
  const std::size_t shown = std::min(kShown, found.names.size());
  snapshots.others = found.names.size() - shown;
  for (std::size_t i = 0; i < shown; ++i) snapshots.newest.push_back(collectSnapshot(disk, found.names[i]));
  return snapshots;
}

}  // namespace halvo
