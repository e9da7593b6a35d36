#include "sim/tools/testing/ToolMachine.h"

#include <algorithm>
#include <sstream>

#include "sim/support/Files.h"
#include "sim/support/MachinePaths.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/SystemTools.h"

namespace halvo::sim {
namespace {

constexpr const char* kInfo = R"(<pkg-info format-version="2" identifier="com.halvo.pkg" version="9"></pkg-info>)";

}  // namespace

ToolMachine::ToolMachine() {
  std::filesystem::create_directories(root());
  std::filesystem::create_directories(directory_.path() / "sim");
  setStateRoot(directory_.path() / "sim");
}

std::string ToolMachine::package(const std::string& version, PackageOrder order) const {
  order.package = directory_.path() / ("Halvo-" + version + ".pkg");
  order.version = version;
  if (order.report.empty()) order.report = reportFile("good.txt");
  buildPackage(order);
  return order.package;
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
  for (const CpioEntry& entry : productFiles(version, wholeFile(HALVO_BROKER_PROGRAM))) {
    if (entry.path.ends_with(pathEnd)) return entry.content;
  }
  return {};
}

std::string reportFile(const std::string& name) { return std::string(HALVO_REPORTS) + "/" + name; }

}  // namespace halvo::sim
