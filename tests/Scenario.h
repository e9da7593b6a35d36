// What every whole-system test stands on: a simulated Mac of its own with the product's application on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/harness/ProductMachine.h"

namespace halvo::sim {

class Scenario : public testing::Test {
 protected:
  // The machine is built; start() boots it.
  ProductMachine machine;

  void start() { machine.mac().start(); }

  Machine& mac() { return machine.mac(); }

  // What the application printed for these arguments, without the line feed.
  std::string reply(const std::vector<std::string>& arguments);

  // What the helper wrote to the system log, without the date and process in front of each line.
  std::vector<std::string> helperLog();

  // The messages in a log file, without their dates; a line without a proper date stays whole.
  std::vector<std::string> messagesIn(const std::string& logPath);

  // The tools that ran, each as one line: path, arguments, "-> status".
  std::vector<std::string> toolRuns();
};

inline constexpr const char* kInstalledReply = R"({"code":"ok","changed":["driver","broker","daemon_agent"]})";
inline constexpr const char* kUnauthorizedReply = R"({"code":"unauthorized"})";
inline constexpr const char* kPingReply = R"({"ok":true,"helper_version":6,"build_abi":1})";
inline constexpr const char* kStagingFailedReply = R"({"code":"untrusted_package","reason":"staging_failed"})";
inline constexpr const char* kInstallLog = "/var/log/halvo-install.log";

// A postinstall script that waits until the file /private/var/tmp/go exists.
std::string waitingScript(Machine& mac);
void letItGo(Machine& mac);

}  // namespace halvo::sim
