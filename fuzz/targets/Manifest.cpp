// A package's manifest: as the client reads it from its file, and as an install takes the version out of it. The input:
// the version that is installed, a bar, and the manifest.
#include <algorithm>
#include <optional>
#include <string>
#include <variant>

#include "HalvoHelper/install/Versions.h"
#include "HalvoHelper/testing/InstallBench.h"
#include "client/Manifest.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/JSONOracle.h"
#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

void checkReading(const std::string& manifest) {
  static const MemoryFile file;
  file.write(manifest);

  const auto read = readManifest(file.path());

  const auto* text = std::get_if<std::string>(&read);
  require(text != nullptr && *text == manifest, "the client sends the file as it is");
}

std::optional<std::string> checkParsing(const std::string& manifest) {
  auto version = halvoParseManifestDriverVersion(manifest);

  require(version == asText(memberOfObject(manifest, "driver_version")), "the version is the text under its key");
  require(!version || version->size() <= manifest.size(), "no more text than the manifest has");
  // A NUL can only be written as an escape, which is what the writer does.
  require(!version || halvoParseManifestDriverVersion("{\"driver_version\":" + asJSON(*version) + "}") == version,
          "what was read is read again");
  require(!halvoParseManifestDriverVersion(manifest + std::string(1, '\0')), "a NUL hides nothing");
  return version;
}

std::ptrdiff_t callsThatBegin(const InstallBench& bench, std::string_view text) {
  return std::ranges::count_if(bench.calls(), [&](const std::string& call) { return call.starts_with(text); });
}

void checkInstall(const std::string& installed, const std::string& manifest, const std::string& incoming) {
  InstallBench bench;
  bench.manifest = manifest;
  bench.installedVersions = {installed};
  const bool isLower =
      !installed.empty() && halvoCompareVersions(incoming, installed) == ComparisonResult::orderedAscending;

  const InstallResult result = bench.run();

  require(std::holds_alternative<InstallOk>(result) == !isLower, "a version that is not lower is installed");
  require(!isLower || result == InstallResult(InstallDowngrade{installed, incoming}), "the refusal names both");
  require(callsThatBegin(bench, "run /usr/sbin/installer ") == (isLower ? 0 : 1), "the installer runs once or never");
  require(!isLower || callsThatBegin(bench, "copyTree ") + callsThatBegin(bench, "run /bin/") == 0, "nor anything");
  require(bench.calls().back() == "removeTree /var/db/halvo/install-staging", "the staged package goes");
}

}  // namespace

void check(std::string_view bytes) {
  Input input(bytes);
  const std::string installed = input.text();
  const std::string manifest = input.rest();

  checkReading(manifest);
  checkInstall(installed, manifest, checkParsing(manifest).value_or("0"));
}

}  // namespace halvo::fuzz
