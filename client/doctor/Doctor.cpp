#include "client/doctor/Doctor.h"

#include <array>
#include <ctime>
#include <string>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/Examination.h"
#include "client/doctor/Findings.h"
#include "client/doctor/LogsCollector.h"
#include "client/doctor/PartsCollector.h"
#include "client/doctor/Reports.h"
#include "client/doctor/ServiceCollector.h"
#include "client/doctor/SnapshotsCollector.h"
#include "client/doctor/ToolsCollector.h"

namespace halvo {
namespace {

// More than the ten seconds that launchd lets pass between two starts of a job.
constexpr std::chrono::seconds kPatience(15);

RightState stateOf(const std::optional<AdminRightDefinition>& right) {
  if (!right) return RightState::missing;
  return halvoAdminRightIsSound(*right) ? RightState::sound : RightState::unsound;
}

Examination examine(Conversation& conversation, const DoctorSources& sources) {
  Examination seen;
  // Before the question, which starts a helper that does not run: it writes the right, and may begin to work.
  seen.rightBefore = stateOf(sources.readRight());
  seen.staging = sources.disk.look(kInstallStagingRoot);
  if (const auto processes = sources.processes()) seen.tools = toolsOfTheHelper(*processes);
  seen.parts = collectParts(sources.disk);
  seen.snapshots = collectSnapshots(sources.disk);
  seen.logs = collectLogs(sources.disk, sources.now());
  seen.service = collectService(conversation);
  seen.rightAfter = stateOf(sources.readRight());
  return seen;
}

ExitStatus statusOf(const Examination& seen, const Findings& findings) {
  if (seen.service.state != ServiceState::answers) return kNoHelper;
  return findings.empty() ? ExitStatus::success : ExitStatus::refused;
}

// As in the helper's logs.
std::string dateText(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &parts)};
}

}  // namespace

ExitStatus runDoctor(const CommandLine& command, Conversation& conversation, std::ostream& out,
                     const DoctorSources& sources) {
  conversation.waitAtMost(command.timeout.value_or(kPatience));
  const Examination seen = examine(conversation, sources);
  const Findings findings = judge(seen);
  const ExitStatus status = statusOf(seen, findings);
  const std::string date = dateText(sources.now());
  out << (command.json ? jsonReport(seen, findings, date, static_cast<int>(status)) : textReport(seen, findings, date));
  return status;
}

}  // namespace halvo
