// A machine with the product on it that is made whole again after every kill.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "tests/soaking/Leftovers.h"
#include "tests/soaking/Soak.h"

namespace halvo::soak {

// Two packages take turns: one is installed, the other comes next.
class Patient {
 public:
  // Starts the machine and installs both, to learn what whole installations look like. A violation when that fails.
  Patient();

  SoakMachine& soak() { return soak_; }

  // The package that came next is the installed one from here on, as far as the other functions are concerned.
  void switchPackages() { fresh_ = 1 - fresh_; }

  // The application's arguments that install the package that comes next.
  [[nodiscard]] std::vector<std::string> installation() const;

  // A tool that was told to hang does.
  bool toolHangs();

  // Waits until the tools of the helper that was killed have ended, but for one that hangs, and judges the components:
  // after an `install` each is the old one or the new one; after a removal also gone, the driver in part.
  void requireNothingHalf(bool install, const std::string& where);

  // Has the helper answer and the package that comes next installed; both must succeed, and leave nothing over.
  void recover(const std::string& where);

  // What recover() has done so far, for people.
  [[nodiscard]] std::string recoveries() const;

 private:
  std::string install();
  void waitForTools(const std::string& where);
  void requireService(const std::string& where);
  void clearStagedPackageAway(const std::string& where);
  void requireWhole(const std::string& where);
  std::ptrdiff_t snapshots();

  SoakMachine soak_;
  std::vector<sim::PackageFiles> packages_;
  std::array<sim::TreeSnapshot, 2> trees_;
  std::size_t fresh_ = 0;  // the package that is installed next
  Rest rest_;
  int recoveries_ = 0;
  int stagingFailures_ = 0;
};

}  // namespace halvo::soak
