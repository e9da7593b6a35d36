#include "sim/tools/ToolRun.h"

#include <sysexits.h>

#include <exception>
#include <optional>
#include <ostream>

#include "sim/tools/CallLog.h"
#include "sim/tools/Fault.h"

namespace halvo::sim {
namespace {

constexpr int kHasNoEnd = -1;

int actUnderFault(const std::optional<Fault>& fault, const std::function<int()>& act) {
  if (!fault) return act();
  if (fault->kind == Fault::Kind::exitAfterActing) act();
  return fault->status;
}

}  // namespace

int runTool(std::string_view tool, const std::vector<std::string>& arguments, const ToolStreams& streams,
            const std::function<int()>& act) {
  int status = EX_SOFTWARE;
  try {
    const std::optional<Fault> fault = scriptedFault(tool, arguments);
    if (fault && fault->kind == Fault::Kind::hang) {
      CallLog::append(tool, arguments, kHasNoEnd);
      hangUntilKilled();
    }
    status = actUnderFault(fault, act);
  } catch (const std::exception& problem) {
    streams.err << problem.what() << "\n";
  }
  CallLog::append(tool, arguments, status);
  return status;
}

}  // namespace halvo::sim
