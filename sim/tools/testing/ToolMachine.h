// A machine for the tests of the tools: a folder that stands for "/", another for the state, and packages beside them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/testing/TemporaryDirectory.h"
#include "sim/tools/ProductPackage.h"

namespace halvo::sim {

struct ToolAnswer {
  int status = 0;
  std::string out;
  std::string err;
  bool operator==(const ToolAnswer&) const = default;
};

class ToolMachine {
 public:
  ToolMachine();

  // A package of the product with a good signature report, unless the order names another one.
  std::string package(const std::string& version, PackageOrder order = {}) const;
  // A package with any payload.
  std::string packageOf(const std::vector<CpioEntry>& payload) const;
  // A file beside the machine.
  std::string file(const std::string& name, std::string_view text) const { return directory_.write(name, text); }

  // Runs the tool of that name with what it prints caught.
  ToolAnswer run(std::string_view tool, const std::vector<std::string>& arguments) const;
  ToolAnswer install(const std::string& package) const { return run("installer", {"-pkg", package, "-target", "/"}); }

  void writeState(const std::string& name, std::string_view text) const { directory_.write("sim/" + name, text); }
  std::string readState(const std::string& name) const { return directory_.read("sim/" + name); }
  // What lies inside the machine, or beside it.
  std::string readInside(const std::string& name) const { return directory_.read("root/" + name); }
  std::string readBeside(const std::string& name) const { return directory_.read(name); }
  std::filesystem::path root() const { return directory_.path() / "root"; }
  std::filesystem::path beside(const std::string& name) const { return directory_.path() / name; }

  // Everything below the root, sorted.
  std::vector<std::string> namesInside() const;

 private:
  TemporaryDirectory directory_;
};

// The content of a file of the product's version, by the end of its path; empty when there is none.
std::string productFile(const std::string& version, const std::string& pathEnd);

// Where a signature report of that name lies.
std::string reportFile(const std::string& name);

}  // namespace halvo::sim
