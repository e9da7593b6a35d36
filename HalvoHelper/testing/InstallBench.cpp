#include "HalvoHelper/testing/InstallBench.h"

#include "HalvoHelper/testing/SignatureReports.h"

namespace halvo {

InstallBench::InstallBench() {
  fs->present = {"/Library/Audio/Plug-Ins/HAL/Halvo.driver", "/Library/PrivilegedHelperTools/halvo-broker",
                 "/Library/LaunchDaemons/com.halvo.broker.plist", "/Library/LaunchAgents/com.halvo.daemon.plist"};
  runner->replies = {{.code = 0, .output = std::string(kGoodSignatureReport)}};
}

InstallSequence InstallBench::sequence() const {
  return InstallSequence{
      .fs = fs,
      .launchctl = Launchctl(runner),
      .installer = Installer(runner),
      .verifier = PkgVerifier(runner),
      .teamID = "QX4TRM2ZL9",
      .audio = AudioActivity(audio),
      .installedDriverVersion =
          [this] {
            recorder->calls.emplace_back("installedDriverVersion");
            const auto version = installedVersions.front();
            if (installedVersions.size() > 1) installedVersions.pop_front();
            return version;
          },
      .pkgPath = "/Users/ada/Halvo 2.pkg",
      .manifestJSON = manifest,
      .epoch =
          [this] {
            recorder->calls.emplace_back("epoch");
            return now;
          },
      .activeGuiUids =
          [this] {
            recorder->calls.emplace_back("activeGuiUids");
            return guiUids;
          },
      .logPath = "/var/log/halvo-install.log",
      .log = [this](const std::string& line) { recorder->calls.push_back("log: " + line); },
  };
}

InstallResult InstallBench::run(bool acceptAudioInterruption) const { return sequence().run(acceptAudioInterruption); }

}  // namespace halvo
