#include "HalvoHelper/testing/InstallMachine.h"

#include <array>
#include <utility>

#include "HalvoHelper/testing/FixedAudioDevices.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

constexpr std::array<const char*, 4> kPartFiles = {
    "/Library/Audio/Plug-Ins/HAL/Halvo.driver/Contents/Info.plist", "/Library/PrivilegedHelperTools/halvo-broker",
    "/Library/LaunchDaemons/com.halvo.broker.plist", "/Library/LaunchAgents/com.halvo.daemon.plist"};
constexpr std::array<const char*, 4> kSavedFiles = {"/Halvo.driver/Contents/Info.plist", "/halvo-broker",
                                                    "/com.halvo.broker.plist", "/com.halvo.daemon.plist"};

void writeFile(const InMemoryPrivilegedFS& fs, const std::string& path, const std::string& contents) {
  for (auto slash = path.rfind('/'); slash != 0; slash = path.rfind('/', slash - 1)) {
    fs.directories.insert(path.substr(0, slash));
  }
  fs.files[path] = contents;
}

std::string listed(const InMemoryPrivilegedFS& fs, const std::string& root, const std::array<const char*, 4>& paths) {
  std::string all;
  for (const char* path : paths) {
    const auto found = fs.files.find(root + path);
    all += (all.empty() ? "" : " ") + (found == fs.files.end() ? "-" : found->second);
  }
  return all;
}

// The tools of the machine, each doing what it does to the file system.
class MachineTools final : public ProcessRunner {
 public:
  explicit MachineTools(const InstallMachine& machine) : machine_(machine) {}

  ProcessResult run(const std::string& tool, const std::vector<std::string>&) const override {
    machine_.fs->step();
    if (tool == "/usr/sbin/pkgutil") return {.code = 0, .output = std::string(kGoodSignatureReport)};
    if (tool == "/usr/sbin/installer") return runInstaller();
    return {};
  }

 private:
  ProcessResult runInstaller() const {
    for (int part = 0; part < machine_.installedParts; ++part) {
      machine_.fs->step();
      writeFile(*machine_.fs, kPartFiles[static_cast<std::size_t>(part)], machine_.newContents);
    }
    return {.code = machine_.installerStatus, .output = ""};
  }

  const InstallMachine& machine_;
};

}  // namespace

InstallMachine::InstallMachine() {
  writeFile(*fs, "/Users/ada/Halvo.pkg", "package");
  for (const char* path : kPartFiles) writeFile(*fs, path, "old");
}

InstallResult InstallMachine::install() {
  const auto tools = std::make_shared<MachineTools>(*this);
  const InstallSequence sequence{
      .fs = fs,
      .launchctl = Launchctl(tools),
      .installer = Installer(tools),
      .verifier = PkgVerifier(tools),
      .teamID = "QX4TRM2ZL9",
      .audio = AudioActivity(std::make_shared<FixedAudioDevices>()),
      .installedDriverVersion = [] { return std::optional<std::string>("1.0"); },
      .pkgPath = "/Users/ada/Halvo.pkg",
      .manifestJSON = R"({"driver_version":"2.0"})",
      .epoch = [this] { return now; },
      .logPath = "/var/log/halvo-install.log",
      .log = [](const std::string&) {},
  };
  return sequence.run(false);
}

void InstallMachine::installKilledAfter(std::size_t steps) {
  fs->callsUntilKilled = steps;
  try {
    static_cast<void>(install());
  } catch (const ProcessKilled&) {
  }
  fs->callsUntilKilled.reset();
}

std::string InstallMachine::parts() const { return listed(*fs, "", kPartFiles); }

std::string InstallMachine::snapshot(std::int64_t name) const {
  return listed(*fs, "/var/db/halvo/install-rollback/" + std::to_string(name), kSavedFiles);
}

void InstallMachine::removeParts() {
  for (const char* path : kPartFiles) fs->files.erase(path);
  fs->removeTree("/Library");
}

}  // namespace halvo
