// What a fresh machine is made of: the list that the build writes beside halvo-sim.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sim/support/CodeSignature.h"

namespace halvo::sim {

struct MachineFile {
  std::filesystem::path source;       // on the host
  std::filesystem::path destination;  // below the machine's folder
  unsigned mode = 0644;
  std::optional<CodeSignature> signature;
  bool operator==(const MachineFile&) const = default;
};

// A sentence for people.
struct MachineProblem {
  std::string text;
  bool operator==(const MachineProblem&) const = default;
};

// The list that belongs to the running program.
std::variant<std::vector<MachineFile>, MachineProblem> machineFilesOfThisBuild();

// Copies one file into the machine at `root`, makes the folders above it, and signs it. Replaces what is there.
std::optional<MachineProblem> layIn(const MachineFile& file, const std::filesystem::path& root);

}  // namespace halvo::sim
