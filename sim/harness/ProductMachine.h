// A simulated Mac as the demonstration and the scenario tests use it: packages lie in the user's downloads, which the
// helper may not read, the application's program makes the requests, and the product's parts are looked at.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "sim/harness/Machine.h"

namespace halvo::sim {

// A package on the machine: its file, and the manifest that names its version.
struct PackageFiles {
  std::string path;
  std::string manifest;
};

struct PackageContents {
  std::string name = "Halvo";                       // of the file, without ".pkg"
  std::string version = "1.2.0";                    // of the driver
  std::string report = "good.txt";                  // the signature report, a file of sim/tools/reports
  std::vector<std::string> extra = {};              // further options of `halvo-sim package`
  std::string folder = "/Users/user501/Downloads";  // where it lies
};

class ProductMachine {
 public:
  static constexpr const char* kAppProgram = "/Applications/Halvo.app/Contents/MacOS/halvo-app";
  static constexpr const char* kHome = "/Users/user501";
  static constexpr const char* kDownloads = "/Users/user501/Downloads";

  // The machine is built and not yet running: prepare its state through mac(), then start it.
  ProductMachine();

  Machine& mac() { return mac_; }
  const Machine& mac() const { return mac_; }

  // Who makes requests: the logged-in user, or root where the host allows no other.
  unsigned user() const;

  // The application's program with these arguments.
  static std::vector<std::string> command(const std::vector<std::string>& arguments);

  // Runs it as the user. While a request is long the future is not ready.
  CommandResult app(const std::vector<std::string>& arguments);
  std::future<CommandResult> appAsync(const std::vector<std::string>& arguments);

  PackageFiles package(const PackageContents& contents);

  // The application's arguments that install such a package.
  static std::vector<std::string> install(const PackageFiles& package, const std::vector<std::string>& options = {});

  // Copies a program of the host into the user's home, signs it, and answers its path inside the machine.
  std::string signedCopy(const std::filesystem::path& program, const std::string& name, const std::string& identifier,
                         const std::string& team);

  // Puts the application back and has it register its helper, as a user does who downloads it again.
  void reinstallApplication();

  // The job with that label; nothing when launchd does not know it.
  std::optional<JobState> job(const std::string& domain, const std::string& label) const;
  // The process of the helper; nothing while none runs.
  std::optional<pid_t> helperProcess() const;

  // The four parts that a package brings, as they lie on disk now.
  TreeSnapshot components() const;

 private:
  Machine mac_;
};

}  // namespace halvo::sim
