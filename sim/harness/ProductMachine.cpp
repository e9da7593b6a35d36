#include "sim/harness/ProductMachine.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "sim/machine/Commands.h"
#include "sim/support/ChildProcess.h"
#include "sim/support/CodeSignature.h"

namespace halvo::sim {

std::vector<std::string> ProductMachine::command(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {kAppProgram};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return words;
}

ProductMachine::ProductMachine() { std::filesystem::create_directories(mac_.path(kDownloads)); }

unsigned ProductMachine::user() const { return mac_.supportsSeveralUsers() ? 501 : 0; }

CommandResult ProductMachine::app(const std::vector<std::string>& arguments) {
  return mac_.run(user(), command(arguments));
}

std::future<CommandResult> ProductMachine::appAsync(const std::vector<std::string>& arguments) {
  return mac_.runAsync(user(), command(arguments));
}

PackageFiles ProductMachine::package(const PackageContents& contents) {
  const std::string stem = contents.folder + "/" + contents.name;
  std::vector<std::string> words = {"package",   mac_.path(stem + ".pkg").string(),
                                    "--version", contents.version,
                                    "--report",  std::string(HALVO_REPORTS) + "/" + contents.report};
  words.insert(words.end(), contents.extra.begin(), contents.extra.end());
  std::ostringstream said;
  if (halvoSim(words, {.out = said, .err = said}) != 0) throw std::runtime_error(said.str());
  mac_.writeFile(stem + ".json", "{\"driver_version\":\"" + contents.version + "\"}\n");
  return {stem + ".pkg", stem + ".json"};
}

std::vector<std::string> ProductMachine::install(const PackageFiles& package, const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {"install", package.path, "--manifest", package.manifest};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

std::string ProductMachine::signedCopy(const std::filesystem::path& program, const std::string& name,
                                       const std::string& identifier, const std::string& team) {
  const std::string inside = std::string(kHome) + "/" + name;
  const std::filesystem::path copy = mac_.path(inside);
  std::filesystem::copy_file(program, copy);
  const CodeSignature signature{.identifier = identifier, .teamIdentifier = team, .anchor = "apple generic"};
  if (!signExecutable(copy, signature)) throw std::runtime_error(name + " could not be signed");
  return inside;
}

void ProductMachine::reinstallApplication() {
  const CommandResult result = runChild({HALVO_SIM_PROGRAM, "app", mac_.path("/").string()});
  if (result.status != 0) throw std::runtime_error("the application cannot be put back: " + result.err);
}

std::optional<JobState> ProductMachine::job(const std::string& domain, const std::string& label) const {
  const std::vector<JobState> jobs = mac_.jobs();
  const auto found =
      std::ranges::find_if(jobs, [&](const JobState& job) { return job.domain == domain && job.label == label; });
  return found == jobs.end() ? std::nullopt : std::optional(*found);
}

std::optional<pid_t> ProductMachine::helperProcess() const {
  const auto helper = job("system", "com.halvo.helper");
  return helper ? helper->pid : std::nullopt;
}

TreeSnapshot ProductMachine::components() const {
  return mac_.snapshotTree({"/Library/Audio/Plug-Ins/HAL/Halvo.driver", "/Library/PrivilegedHelperTools/halvo-broker",
                            "/Library/LaunchDaemons/com.halvo.broker.plist",
                            "/Library/LaunchAgents/com.halvo.daemon.plist"});
}

}  // namespace halvo::sim
