#include "sim/tools/SystemTools.h"

#include <sysexits.h>

#include <fstream>
#include <iomanip>
#include <ostream>

#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

// A node that does not open: the low byte of the directory service's error -14008.
constexpr int kNodeNotFound = 184;
constexpr int kNameWidth = 24;

// `. -list /Users UniqueID` prints the accounts of the file "users" in the state folder, a name and a user id a line.
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

int reported(const std::string& what, const ControlReply& reply, const ToolStreams& streams) {
  if (reply.status != 0) streams.err << what << " failed: " << reply.status << ": " << reply.text << "\n";
  return reply.status;
}

}  // namespace

int launchctlTool(const ControlClient& launchd, const std::vector<std::string>& arguments, const ToolStreams& streams) {
  const std::string verb = arguments.empty() ? "" : arguments[0];
  if (verb == "bootstrap" && arguments.size() == 3) {
    return reported("Bootstrap", launchd.bootstrap(arguments[1], arguments[2]), streams);
  }
  if (verb == "bootout" && arguments.size() == 2) return reported("Boot-out", launchd.bootout(arguments[1]), streams);
  if (verb == "print" && arguments.size() == 2) {
    const ControlReply reply = launchd.print(arguments[1]);
    (reply.status == 0 ? streams.out : streams.err) << reply.text << "\n";
    return reply.status;
  }
  streams.err << "Usage: launchctl bootstrap DOMAIN PLIST\n"
                 "       launchctl bootout DOMAIN/LABEL\n"
                 "       launchctl print DOMAIN | DOMAIN/LABEL\n"
                 "A DOMAIN is \"system\" or \"gui/UID\".\n";
  return EX_USAGE;
}

int killallTool(const ControlClient& launchd, const std::vector<std::string>& arguments, const ToolStreams& streams) {
  if (arguments.size() != 1) {
    streams.err << "usage: killall procname\n";
    return 1;
  }
  const ControlReply reply = launchd.killall(arguments[0]);
  if (reply.status != 0) streams.err << reply.text << "\n";
  return reply.status;
}

int actAsSystemTool(std::string_view name, const std::vector<std::string>& arguments, std::string_view root,
                    const ToolStreams& streams) {
  const std::string tool = std::filesystem::path(name).filename();
  const auto run = [&](const char* path, const std::function<int()>& act) {
    return runTool(path, arguments, streams, act);
  };
  if (tool == "installer") return run("/usr/sbin/installer", [&] { return installerTool(arguments, root, streams); });
  if (tool == "pkgutil") return run("/usr/sbin/pkgutil", [&] { return pkgutilTool(arguments, root, streams); });
  if (tool == "dscl") return run("/usr/bin/dscl", [&] { return dsclTool(arguments, streams); });
  if (tool == "launchctl") {
    return run("/bin/launchctl", [&] { return launchctlTool(ControlClient(), arguments, streams); });
  }
  if (tool == "killall") {
    return run("/usr/bin/killall", [&] { return killallTool(ControlClient(), arguments, streams); });
  }
  streams.err << tool
              << ": this program acts by its name; call it as installer, pkgutil, dscl, launchctl or killall.\n";
  return EX_USAGE;
}

}  // namespace halvo::sim
