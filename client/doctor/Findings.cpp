#include "client/doctor/Findings.h"

#include <iterator>
#include <utility>

#include "HalvoHelper/system/ProductPaths.h"

namespace halvo {
namespace {

void append(Findings& all, Findings more) {
  all.insert(all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

}  // namespace

Findings judge(const Examination& seen) {
  Findings all = judgeService(seen);
  append(all, judgeRight(seen));
  append(all, judgeParts(seen));
  append(all, judgeOperations(seen));
  append(all, judgeSnapshots(seen));
  return all;
}

std::vector<std::string> unreadablePlaces(const Examination& seen) {
  std::vector<std::string> places;
  const auto note = [&](Sight sight, const std::string& place) {
    if (sight == Sight::unreadable) places.push_back(place);
  };
  for (const Part& part : seen.parts) {
    note(part.item.sight, part.rule.path);
    note(part.versionSight, std::string("the version of ") + part.rule.path);
  }
  note(seen.snapshots.sight, kInstallRollbackRoot);
  for (const Snapshot& snapshot : seen.snapshots.newest) note(snapshot.driverSight, "the driver in " + snapshot.name);
  note(seen.staging.sight, kInstallStagingRoot);
  for (const LogView& log : seen.logs) note(log.sight, log.path);
  if (!seen.tools) places.emplace_back("the list of processes");
  return places;
}

const char* wordFor(ItemKind kind) {
  switch (kind) {
    case ItemKind::folder:
      return "a folder";
    case ItemKind::file:
      return "a file";
    case ItemKind::link:
      return "a link";
    case ItemKind::other:
      return "neither file, folder nor link";
  }
  return "";  // Not reached: there is no other kind.
}

}  // namespace halvo
