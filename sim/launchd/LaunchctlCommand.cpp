#include "sim/launchd/LaunchctlCommand.h"

namespace halvo::sim {
namespace {

constexpr int kUsage = 64;

int usage(std::ostream& err) {
  err << "Usage: launchctl bootstrap DOMAIN PLIST...\n"
         "       launchctl bootout DOMAIN/LABEL\n"
         "       launchctl print DOMAIN | DOMAIN/LABEL\n"
         "A DOMAIN is \"system\" or \"gui/UID\".\n";
  return kUsage;
}

int report(const std::string& what, const ControlReply& reply, std::ostream& err) {
  if (reply.status != 0) err << what << " failed: " << reply.status << ": " << reply.text << "\n";
  return reply.status;
}

int bootstrap(const ControlClient& launchd, const std::vector<std::string>& arguments, std::ostream& err) {
  int status = 0;
  for (std::size_t i = 2; i < arguments.size(); ++i) {
    const int one = report("Bootstrap", launchd.bootstrap(arguments[1], arguments[i]), err);
    if (one != 0) status = one;
  }
  return status;
}

int print(const ControlClient& launchd, const std::string& target, std::ostream& out, std::ostream& err) {
  const ControlReply reply = launchd.print(target);
  (reply.status == 0 ? out : err) << reply.text << "\n";
  return reply.status;
}

}  // namespace

int launchctlCommand(const ControlClient& launchd, const std::vector<std::string>& arguments, std::ostream& out,
                     std::ostream& err) {
  const std::string verb = arguments.empty() ? "" : arguments[0];
  if (verb == "bootstrap" && arguments.size() >= 3) return bootstrap(launchd, arguments, err);
  if (verb == "bootout" && arguments.size() == 2) return report("Boot-out", launchd.bootout(arguments[1]), err);
  if (verb == "print" && arguments.size() == 2) return print(launchd, arguments[1], out, err);
  return usage(err);
}

int killallCommand(const ControlClient& launchd, const std::vector<std::string>& arguments, std::ostream& err) {
  if (arguments.empty()) {
    err << "usage: killall procname ...\n";
    return 1;
  }
  int status = 0;
  for (const std::string& name : arguments) {
    const ControlReply reply = launchd.killall(name);
    if (reply.status == 0) continue;
    err << reply.text << "\n";
    status = 1;
  }
  return status;
}

}  // namespace halvo::sim
