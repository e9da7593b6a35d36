#include <algorithm>
#include <iterator>

#include "HalvoHelperXPC/Constants.h"
#include "HalvoHelperXPC/Version.h"
#include "client/doctor/JSONText.h"
#include "client/doctor/Reports.h"
#include "client/doctor/ShortText.h"

namespace halvo {
namespace {

// Raised when a member goes or means something else; a new one is no reason.
constexpr std::int64_t kSchema = 1;

template <typename Values, typename Function>
std::string arrayOf(const Values& values, Function&& toJSON) {
  std::vector<std::string> texts;
  std::ranges::transform(values, std::back_inserter(texts), toJSON);
  return jsonArray(texts);
}

std::string numberOrNull(const std::optional<std::int64_t>& number) { return number ? jsonNumber(*number) : kJSONNull; }

std::string nameOf(Sight sight) {
  switch (sight) {
    case Sight::present:
      return jsonString("present");
    case Sight::absent:
      return jsonString("absent");
    case Sight::unreadable:
      return jsonString("unreadable");
  }
  return kJSONNull;  // Not reached: there is no other sight.
}

std::string nameOf(ItemKind kind) {
  switch (kind) {
    case ItemKind::folder:
      return jsonString("folder");
    case ItemKind::file:
      return jsonString("file");
    case ItemKind::link:
      return jsonString("link");
    case ItemKind::other:
      return jsonString("other");
  }
  return kJSONNull;  // Not reached: there is no other kind.
}

std::string nameOf(ServiceState state) {
  switch (state) {
    case ServiceState::answers:
      return jsonString("answers");
    case ServiceState::unreachable:
      return jsonString("unreachable");
    case ServiceState::silent:
      return jsonString("silent");
    case ServiceState::strange:
      return jsonString("strange");
  }
  return kJSONNull;  // Not reached: there is no other state.
}

std::string nameOf(RightState state) {
  switch (state) {
    case RightState::sound:
      return jsonString("sound");
    case RightState::unsound:
      return jsonString("unsound");
    case RightState::missing:
      return jsonString("missing");
  }
  return kJSONNull;  // Not reached: there is no other state.
}

std::string versionOf(Sight sight, const std::string& version) {
  return sight == Sight::present ? jsonString(version) : kJSONNull;
}

std::string serviceObject(const Service& service) {
  const auto users = service.graphicalUsers ? arrayOf(*service.graphicalUsers, jsonNumber) : std::string(kJSONNull);
  return jsonObject({{"state", nameOf(service.state)},
                     {"explanation", jsonString(service.explanation)},
                     {"helper_version", numberOrNull(service.helperVersion)},
                     {"build_abi", numberOrNull(service.buildABI)},
                     {"graphical_users", users}});
}

std::string partObject(const Part& part) {
  const bool isThere = part.item.sight == Sight::present;
  return jsonObject({{"path", jsonString(part.rule.path)},
                     {"sight", nameOf(part.item.sight)},
                     {"kind", isThere ? nameOf(part.item.kind) : kJSONNull},
                     {"version", versionOf(part.versionSight, part.version)},
                     {"owner", isThere ? jsonNumber(part.item.owner) : kJSONNull},
                     {"group", isThere ? jsonNumber(part.item.group) : kJSONNull},
                     {"mode", isThere ? jsonString(modeText(part.item.mode)) : kJSONNull}});
}

std::string snapshotObject(const Snapshot& snapshot) {
  return jsonObject({{"name", jsonString(snapshot.name)},
                     {"kind", nameOf(snapshot.item.kind)},
                     {"driver_version", versionOf(snapshot.driverSight, snapshot.driverVersion)},
                     {"bytes", jsonNumber(snapshot.bytes)},
                     {"bytes_are_all", jsonBoolean(snapshot.bytesAreAll)},
                     {"age_seconds", jsonNumber(snapshot.item.age.count())},
                     {"complete", jsonBoolean(snapshot.item.kind == ItemKind::folder && snapshot.missing.empty())},
                     {"missing", arrayOf(snapshot.missing, jsonString)}});
}

std::string snapshotsObject(const Snapshots& snapshots) {
  return jsonObject({{"sight", nameOf(snapshots.sight)},
                     {"newest", arrayOf(snapshots.newest, snapshotObject)},
                     {"others", jsonNumber(static_cast<std::int64_t>(snapshots.others))}});
}

std::string stagingObject(const Item& staging) {
  return jsonObject({{"sight", nameOf(staging.sight)},
                     {"age_seconds", staging.sight == Sight::present ? jsonNumber(staging.age.count()) : kJSONNull}});
}

std::string refusalObject(const std::optional<Refusal>& refusal) {
  if (!refusal) return kJSONNull;
  return jsonObject({{"date", jsonString(refusal->date)},
                     {"message", jsonString(refusal->message)},
                     {"overcome", jsonBoolean(refusal->overcome)}});
}

std::string logObject(const LogView& log) {
  return jsonObject(
      {{"path", jsonString(log.path)}, {"sight", nameOf(log.sight)}, {"last_refusal", refusalObject(log.refusal)}});
}

std::string toolObject(const Tool& tool) {
  return jsonObject({{"process", jsonNumber(tool.process)},
                     {"name", jsonString(tool.name)},
                     {"age_seconds", jsonNumber(tool.age.count())}});
}

std::string findingObject(const Finding& finding) {
  return jsonObject(
      {{"code", jsonString(finding.code)}, {"text", jsonString(finding.text)}, {"hint", jsonString(finding.hint)}});
}

}  // namespace

std::string jsonReport(const Examination& seen, const Findings& findings, std::string_view date, int status) {
  return jsonObject({{"schema", jsonNumber(kSchema)},
                     {"date", jsonString(date)},
                     {"status", jsonNumber(status)},
                     {"program_version", jsonString(kHalvoVersion)},
                     {"program_protocol", jsonNumber(kHalvoHelperXPCVersion)},
                     {"service", serviceObject(seen.service)},
                     {"right", jsonObject({{"before", nameOf(seen.rightBefore)}, {"after", nameOf(seen.rightAfter)}})},
                     {"tools", seen.tools ? arrayOf(*seen.tools, toolObject) : kJSONNull},
                     {"staging", stagingObject(seen.staging)},
                     {"parts", arrayOf(seen.parts, partObject)},
                     {"snapshots", snapshotsObject(seen.snapshots)},
                     {"logs", arrayOf(seen.logs, logObject)},
                     {"unreadable", arrayOf(unreadablePlaces(seen), jsonString)},
                     {"findings", arrayOf(findings, findingObject)}}) +
         "\n";
}

}  // namespace halvo
