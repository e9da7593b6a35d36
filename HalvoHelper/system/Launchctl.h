// Drives launchd. Reads no output: every call answers with the tool's exit status, and the caller decides what a
// non-zero status means.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "HalvoHelper/system/ProcessRunner.h"

namespace halvo {

// Every call blocks until the tool exits and answers -1 if the tool could not be started. Any thread.
class Launchctl {
 public:
  explicit Launchctl(std::shared_ptr<const ProcessRunner> runner);

  // Removes `label` from the GUI domain of `uid`, or from the system domain.
  std::int32_t bootoutGui(std::int64_t uid, const std::string& label) const;
  std::int32_t bootoutSystem(const std::string& label) const;

  // Loads the job that the property list describes into the system domain, or into the GUI domain of `uid`.
  std::int32_t bootstrapSystem(const std::string& plistPath) const;
  std::int32_t bootstrapGui(std::int64_t uid, const std::string& plistPath) const;

  // Whether `uid` has a graphical login session now.
  bool guiDomainPresent(std::int64_t uid) const;

  // Ends the Core Audio daemon; launchd starts it again at once. Interrupts every sound on the machine.
  std::int32_t restartCoreaudiod() const;

 private:
  std::int32_t launchctl(const std::vector<std::string>& arguments) const;

  std::shared_ptr<const ProcessRunner> runner_;
};

}  // namespace halvo
