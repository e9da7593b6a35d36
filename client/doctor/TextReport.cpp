#include <algorithm>
#include <cstddef>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelperXPC/Constants.h"
#include "HalvoHelperXPC/Version.h"
#include "client/VisibleText.h"
#include "client/doctor/Reports.h"
#include "client/doctor/ShortText.h"

namespace halvo {
namespace {

// A column for a path, one for a version, owner or age, one for what is last.
constexpr std::size_t kLabel = 11;
constexpr std::size_t kPathColumn = 49;
constexpr std::size_t kColumn = 13;
constexpr std::size_t kVersionShown = 10;

// The columns of the snapshots.
constexpr std::size_t kName = 24;
constexpr std::size_t kDriver = 11;
constexpr std::size_t kSize = 9;
constexpr std::size_t kAge = 10;

constexpr std::size_t kLog = 34;

// The text and at least one blank, as wide as the column.
std::string cell(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size() + 1), ' ');
  return text;
}

std::string labelled(std::string_view label, const std::string& text) {
  return cell(std::string(label), kLabel) + text + "\n";
}

std::string safe(std::string_view text, std::size_t most) { return shortened(visibleText(text), most); }

std::string versionShown(Sight sight, const std::string& version) {
  if (sight == Sight::unreadable) return "unreadable";
  return sight == Sight::present ? safe(version, kVersionShown) : "-";
}

std::string serviceLine(const Service& service) {
  switch (service.state) {
    case ServiceState::answers:
      return "answers: protocol " + std::to_string(service.helperVersion.value_or(0)) + ", build ABI " +
             (service.buildABI ? std::to_string(*service.buildABI) : "unknown") + "; halvo-app " +
             std::string(kHalvoVersion) + " speaks " + std::to_string(kHalvoHelperXPCVersion);
    case ServiceState::unreachable:
      return "cannot be reached";
    case ServiceState::silent:
      return "does not reply";
    case ServiceState::strange:
      return "replies what this program does not know";
  }
  return {};  // Not reached: there is no other state.
}

std::string usersLine(const Service& service) {
  if (!service.graphicalUsers) return "unknown";
  if (service.graphicalUsers->empty()) return "none has a graphical session";
  std::string list;
  for (const std::int64_t user : *service.graphicalUsers) list += (list.empty() ? "" : ", ") + std::to_string(user);
  return safe(list, 40) + " with a graphical session";
}

std::string rightLine(RightState state) {
  switch (state) {
    case RightState::sound:
      return std::string(kHalvoAdminRight) + ": sound";
    case RightState::unsound:
      return std::string(kHalvoAdminRight) + ": not as the helper writes it";
    case RightState::missing:
      return std::string(kHalvoAdminRight) + ": missing or unreadable";
  }
  return {};  // Not reached: there is no other state.
}

std::string toolsLine(const std::optional<std::vector<Tool>>& tools) {
  constexpr std::size_t kShown = 3;
  if (!tools) return "unknown";
  if (tools->empty()) return "none of the helper's runs";
  std::string list;
  for (std::size_t i = 0; i < std::min(kShown, tools->size()); ++i) {
    list += (i == 0 ? "" : ", ") + (*tools)[i].name + " for " + ageText((*tools)[i].age);
  }
  return tools->size() > kShown ? list + ", ..." : list;
}

std::string stagingLine(const Item& staging) {
  if (staging.sight == Sight::unreadable) return "unreadable";
  return staging.sight == Sight::absent ? "none" : "there since " + ageText(staging.age);
}

std::string summary(const Examination& seen) {
  return labelled("Service", serviceLine(seen.service)) + labelled("Users", usersLine(seen.service)) +
         labelled("Right", rightLine(seen.rightAfter)) + labelled("Tools", toolsLine(seen.tools)) +
         labelled("Staging", stagingLine(seen.staging));
}

std::string partLine(const Part& part) {
  const std::string path = cell(part.rule.path, kPathColumn);
  if (part.item.sight == Sight::unreadable) return path + "unreadable\n";
  if (part.item.sight == Sight::absent) return path + "not there\n";
  // Owner and mode of a link say nothing about what it leads to.
  if (part.item.kind != part.rule.kind) return path + wordFor(part.item.kind) + "\n";
  return path + cell(versionShown(part.versionSight, part.version), kColumn) +
         cell(ownerText(part.item.owner, part.item.group), kColumn) + modeText(part.item.mode) + "\n";
}

std::string partsTable(const std::vector<Part>& parts) {
  std::string table = cell("Part", kPathColumn) + cell("Version", kColumn) + cell("Owner", kColumn) + "Mode\n";
  for (const Part& part : parts) table += partLine(part);
  return table;
}

std::string savedText(const Snapshot& snapshot) {
  if (snapshot.item.kind != ItemKind::folder) return "no snapshot";
  if (snapshot.missing.empty()) return "complete";
  const std::size_t all = kInstalledParts.size();
  if (snapshot.missing.size() == all) return "none: a first install";
  return std::to_string(all - snapshot.missing.size()) + " of " + std::to_string(all) + " parts";
}

std::string snapshotLine(const Snapshot& snapshot) {
  const std::string size = (snapshot.bytesAreAll ? "" : "over ") + sizeText(snapshot.bytes);
  return cell(safe(snapshot.name, 20), kName) +
         cell(versionShown(snapshot.driverSight, snapshot.driverVersion), kDriver) + cell(size, kSize) +
         cell(ageText(snapshot.item.age), kAge) + savedText(snapshot) + "\n";
}

std::string snapshotsTable(const Snapshots& snapshots) {
  std::string table =
      cell("Snapshot", kName) + cell("Driver", kDriver) + cell("Size", kSize) + cell("Age", kAge) + "Parts\n";
  if (snapshots.sight == Sight::unreadable) return table + "unreadable\n";
  if (snapshots.newest.empty()) return table + "none\n";
  for (const Snapshot& snapshot : snapshots.newest) table += snapshotLine(snapshot);
  if (snapshots.others > 0) table += "and " + std::to_string(snapshots.others) + " more\n";
  return table;
}

std::string logLine(const LogView& log) {
  const std::string path = cell(log.path, kLog);
  if (log.sight == Sight::unreadable) return path + "unreadable\n";
  if (!log.refusal) return path + (log.sight == Sight::absent ? "no log yet\n" : "none\n");
  return path + log.refusal->date + (log.refusal->overcome ? ", and success since\n" : "\n") + "  " +
         safe(log.refusal->message, 74) + "\n";
}

std::string logsTable(const std::vector<LogView>& logs) {
  std::string table = cell("Log", kLog) + "Last refusal or failure\n";
  for (const LogView& log : logs) table += logLine(log);
  return table;
}

std::string unreadableParagraph(const std::vector<std::string>& places) {
  if (places.empty()) return {};
  std::string list;
  for (const std::string& place : places) list += (list.empty() ? "" : ", ") + safe(place, 80);
  return "\n" + wrapped("You may not read " + list + ". \"sudo halvo-app doctor\" does.", "", "");
}

std::string findingsList(const Findings& findings) {
  if (findings.empty()) return "\nNothing is found to be wrong.\n";
  std::string list = findings.size() == 1 ? "\n1 finding:\n" : "\n" + std::to_string(findings.size()) + " findings:\n";
  for (const Finding& finding : findings) {
    list += wrapped(visibleText(finding.text), "! ", "  ") + wrapped(visibleText(finding.hint), "    ", "    ");
  }
  return list;
}

}  // namespace

std::string textReport(const Examination& seen, const Findings& findings, std::string_view date) {
  return labelled("Date", std::string(date)) + summary(seen) + "\n" + partsTable(seen.parts) + "\n" +
         snapshotsTable(seen.snapshots) + "\n" + logsTable(seen.logs) + unreadableParagraph(unreadablePlaces(seen)) +
         findingsList(findings);
}

}  // namespace halvo
