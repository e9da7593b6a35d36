#include "HalvoHelper/testing/InstallMachine.h"

#include <utility>

#include "HalvoHelper/system/PathStrings.h"
#include "HalvoHelper/testing/FixedAudioDevices.h"
#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {
namespace {

bool isBundle(const std::string& path) { return path.ends_with(".driver"); }

std::vector<std::string> wholePart(const std::string& path, const std::string& contents) {
  if (!isBundle(path)) return {"=" + contents};
  return {"/", "/Contents/", "/Contents/Info.plist=" + contents, "/Contents/MacOS/",
          "/Contents/MacOS/Halvo=" + contents};
}

void writePart(const FileTree& tree, const std::string& path, const std::string& contents) {
  if (!isBundle(path)) {
    tree.write(path, contents);
    return;
  }
  tree.write(path + "/Contents/Info.plist", contents);
  tree.write(path + "/Contents/MacOS/Halvo", contents);
}

std::string joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

// The tools of the machine, each doing what it does to the file system.
class MachineTools final : public ProcessRunner {
 public:
  MachineTools(const InstallMachine& machine, const FileTree& tree) : machine_(machine), tree_(tree) {}

  ProcessResult run(const std::string& tool, const std::vector<std::string>&) const override {
    tree_.step();
    if (tool == "/usr/sbin/pkgutil") return {.code = 0, .output = std::string(kGoodSignatureReport)};
    if (tool == "/usr/sbin/installer") return runInstaller();
    return {};
  }

 private:
  ProcessResult runInstaller() const {
    for (int part = 0; part < machine_.installedParts; ++part) {
      tree_.step();
      writePart(tree_, kMachineParts.at(static_cast<std::size_t>(part)), machine_.newContents);
    }
    machine_.installerAlso();
    return {.code = machine_.installerStatus, .output = ""};
  }

  const InstallMachine& machine_;
  const FileTree& tree_;
};

}  // namespace

InstallMachine::InstallMachine(std::shared_ptr<const FileTree> tree, const std::string& old, const std::string& package)
    : tree_(std::move(tree)), known_({old}) {
  tree_->write("/Users/ada/Halvo.pkg", package);
  for (const char* path : kMachineParts) writePart(*tree_, path, old);
}

InstallResult InstallMachine::install() {
  known_.insert(newContents);
  const std::shared_ptr<const ProcessRunner> runner = tools();
  const InstallSequence sequence{
      .fs = aroundFiles(tree_->fs()),
      .launchctl = Launchctl(runner),
      .installer = Installer(runner),
      .verifier = PkgVerifier(runner),
      .teamID = "QX4TRM2ZL9",
      .audio = AudioActivity(std::make_shared<FixedAudioDevices>()),
      .installedDriverVersion = [] { return std::optional<std::string>("1.0"); },
      .pkgPath = "/Users/ada/Halvo.pkg",
      .manifestJSON = R"({"driver_version":"2.0"})",
      .epoch = [this] { return now; },
      .activeGuiUids = [this] { return guiUids; },
      .logPath = "/var/log/halvo-install.log",
      .log = [this](const std::string& line) { log.push_back(line); },
  };
  return sequence.run(false);
}

UninstallResult InstallMachine::uninstall() {
  const std::shared_ptr<const ProcessRunner> runner = tools();
  const UninstallSequence sequence{
      .fs = aroundFiles(tree_->fs()),
      .launchctl = Launchctl(runner),
      .runner = runner,
      .audio = AudioActivity(std::make_shared<FixedAudioDevices>()),
      .activeGuiUids = [this] { return guiUids; },
      .guiAppPath = "/Applications/Halvo.app",
      .logPath = "/var/log/halvo-uninstall.log",
      .log = [this](const std::string& line) { log.push_back(line); },
  };
  return sequence.run(false);
}

std::string InstallMachine::parts() const {
  std::vector<std::string> words;
  for (const char* path : kMachineParts) words.push_back(contentsOfPart(path));
  return joined(words);
}

std::string InstallMachine::snapshot(std::int64_t name) const {
  const std::string directory = "/var/db/halvo/install-rollback/" + std::to_string(name) + "/";
  std::vector<std::string> words;
  for (const char* path : kMachineParts) words.push_back(contentsOfPart(directory + halvoLastPathComponent(path)));
  return joined(words);
}

std::shared_ptr<const ProcessRunner> InstallMachine::tools() const {
  return aroundTools(std::make_shared<MachineTools>(*this, *tree_));
}

void InstallMachine::removeParts() const { tree_->fs()->removeTree("/Library"); }

std::string InstallMachine::contentsOfPart(const std::string& path) const {
  const std::vector<std::string> found = tree_->listing(path);
  if (found.empty()) return "-";
  for (const std::string& contents : known_) {
    if (found == wholePart(path, contents)) return contents.substr(0, contents.find('\n'));
  }
  return "damaged";
}

}  // namespace halvo
