#include "client/doctor/testing/HealthyMac.h"

#include <algorithm>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/PartsCollector.h"

namespace halvo {
namespace {

// The rules come from the collector itself, which finds nothing there.
std::vector<Part> healthyParts() {
  std::vector<Part> parts = collectParts(Disk("/nowhere"));
  for (Part& part : parts) {
    part.item = {.sight = Sight::present, .kind = part.rule.kind, .mode = part.rule.mode};
    if (part.rule.versionFile == nullptr) continue;
    part.versionSight = Sight::present;
    part.version = "1.2.0";
  }
  return parts;
}

LogView emptyLog(const char* path) {
  return {.path = path,
          .item = {.sight = Sight::present, .kind = ItemKind::file, .mode = 0644},
          .sight = Sight::present,
          .refusal = {}};
}

}  // namespace

Examination healthyMac() {
  Examination seen;
  seen.parts = healthyParts();
  seen.snapshots.sight = Sight::present;
  seen.snapshots.newest.push_back(
      {.name = "1771000000",
       .item = {.sight = Sight::present, .kind = ItemKind::folder, .mode = 0755, .age = std::chrono::hours(48)},
       .missing = {},
       .driverSight = Sight::present,
       .driverVersion = "1.1.0",
       .bytes = 211'000});
  seen.logs = {emptyLog(kInstallLogPath), emptyLog(kUninstallLogPath)};
  seen.tools.emplace();
  seen.rightBefore = RightState::sound;
  seen.rightAfter = RightState::sound;
  seen.service = {.state = ServiceState::answers,
                  .explanation = {},
                  .helperVersion = 6,
                  .buildABI = 1,
                  .graphicalUsers = std::vector<std::int64_t>{501}};
  return seen;
}

Part& partAt(Examination& seen, std::string_view path) {
  return *std::ranges::find_if(seen.parts, [&](const Part& part) { return part.rule.path == path; });
}

Findings findingsAfter(const DamageRow& row) {
  Examination seen = healthyMac();
  row.spoil(seen);
  return judge(seen);
}

void PrintTo(const Finding& finding, std::ostream* out) {
  *out << finding.code << ": " << finding.text << " -> " << finding.hint;
}

}  // namespace halvo
