#include <algorithm>
#include <string_view>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/Findings.h"

namespace halvo {
namespace {

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

// An empty one belongs to a first install: there was nothing to save.
bool isPartial(const Snapshot& snapshot) {
  return !snapshot.missing.empty() && snapshot.missing.size() < kInstalledParts.size();
}

bool holdsDriver(const Snapshot& snapshot) {
  return std::ranges::none_of(snapshot.missing, [](const std::string& name) {
    return std::string_view(kDriverBundlePath).ends_with("/" + name);
  });
}

}  // namespace

Findings judgeSnapshots(const Examination& seen) {
  Findings all;
  for (const Snapshot& snapshot : seen.snapshots.newest) {
    if (snapshot.item.sight != Sight::present) continue;
    if (snapshot.item.kind != ItemKind::folder) {
      all.push_back({"snapshot-kind",
                     std::string(kInstallRollbackRoot) + "/" + snapshot.name + " is " + wordFor(snapshot.item.kind) +
                         ", not a folder.",
                     "The helper makes folders there and nothing else. Look whose it is, and remove it."});
      continue;
    }
    if (isPartial(snapshot)) {
      all.push_back({"snapshot-partial", "The snapshot " + snapshot.name + " lacks " + listed(snapshot.missing) + ".",
                     "These parts were not installed at that time, or there was no room to save them: what is copied "
                     "back from there is not the whole product. See that the disk has room; the next install saves "
                     "all that is there."});
    }
    if (holdsDriver(snapshot) && snapshot.driverSight == Sight::absent) {
      all.push_back({"snapshot-damaged", "The driver in the snapshot " + snapshot.name + " is damaged.",
                     "An install was killed while it saved the parts. Copy nothing back from there by hand; the next "
                     "install saves them anew."});
    }
  }
  return all;
}

}  // namespace halvo
