#include "sim/tools/DsclTool.h"

#include <sysexits.h>

#include <fstream>
#include <iomanip>
#include <ostream>

#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

// A node that does not open: the low byte of the directory service's error -14008.
constexpr int kNodeNotFound = 184;
constexpr int kNameWidth = 24;

}  // namespace

int dsclTool(const std::vector<std::string>& arguments, const ToolStreams& streams) {
  if (arguments != std::vector<std::string>{".", "-list", "/Users", "UniqueID"}) {
    streams.err << "Usage: dscl . -list /Users UniqueID\n";
    return EX_USAGE;
  }
  std::ifstream users(stateRoot() / "users");
  if (!users) {
    streams.err << "<dscl_cmd> DS Error: -14008 (eDSNodeNotFound)\n";
    return kNodeNotFound;
  }
  for (std::string name, id; users >> name >> id;) {
    streams.out << std::left << std::setw(kNameWidth - 1) << name << " " << id << "\n";
  }
  return 0;
}

}  // namespace halvo::sim
