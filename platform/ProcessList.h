// The processes that run on the machine.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

struct ProcessEntry {
  std::int64_t process = 0;
  std::int64_t parent = 0;
  std::uint32_t user = 0;  // the effective one
  std::string name;        // of the program's file, its first 15 bytes at least; whoever starts a program chooses it
  std::chrono::seconds age{0};
};

// All of them, of every user, whoever asks; some may have ended since. Nothing when the system does not tell.
[[nodiscard]] std::optional<std::vector<ProcessEntry>> halvoRunningProcesses();

}  // namespace halvo
