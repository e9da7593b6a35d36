#include "sim/tools/testing/ToolMachine.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "sim/support/StateRoot.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/PackageCommand.h"
#include "sim/tools/ProductFiles.h"
#include "sim/tools/SystemTools.h"

namespace halvo::sim {
namespace {

constexpr const char* kInfo = R"(<pkg-info format-version="2" identifier="com.halvo.pkg" version="9"></pkg-info>)";

std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

ToolMachine::ToolMachine() {
  std::filesystem::create_directories(root());
  std::filesystem::create_directories(directory_.path() / "sim");
  setStateRoot(directory_.path() / "sim");
}

std::string ToolMachine::package(const std::string& version, const std::vector<std::string>& options) const {
  const std::string path = directory_.path() / ("Halvo-" + version + ".pkg");
  std::vector<std::string> words = {path, "--version", version, "--report", reportFile("good.txt")};
  words.insert(words.end(), options.begin(), options.end());
  if (packageCommand(words) != 0) throw std::runtime_error("the package could not be built");
  return path;
}

std::string ToolMachine::packageOf(const std::vector<CpioEntry>& payload) const {
  const std::string path = directory_.path() / "any.pkg";
  FlatPackage({{kPackageInfoMember, kInfo}, {kPayloadMember, gzippedCpio(payload)}}).write(path);
  return path;
}

ToolAnswer ToolMachine::run(std::string_view tool, const std::vector<std::string>& arguments) const {
  std::ostringstream out;
  std::ostringstream err;
  const int status = actAsSystemTool(tool, arguments, root().string(), {.out = out, .err = err});
  return {.status = status, .out = out.str(), .err = err.str()};
}

std::vector<std::string> ToolMachine::namesInside() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root())) {
    names.push_back(entry.path().lexically_relative(root()));
  }
  std::ranges::sort(names);
  return names;
}

std::string productFile(const std::string& version, const std::string& pathEnd) {
  for (const CpioEntry& entry : productFiles(version, bytesOf(HALVO_BROKER_PROGRAM))) {
    if (entry.path.ends_with(pathEnd)) return entry.content;
  }
  return {};
}

std::string reportFile(const std::string& name) { return std::string(HALVO_REPORTS) + "/" + name; }

}  // namespace halvo::sim
