// Linked into test programs: keeps what they log out of the host's own /var/log.
#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

[[maybe_unused]] const bool kQuiet = [] {
  machinePaths().systemLog = "/dev/null";
  return true;
}();

}  // namespace
}  // namespace halvo::sim
