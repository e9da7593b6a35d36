// The code signature of a program in the simulated Mac: a block appended to the executable file, which keeps it
// runnable. It says who signed the program; it proves nothing, since nobody attacks the simulation itself.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace halvo::sim {

struct CodeSignature {
  std::string identifier;      // for example "com.halvo.app"
  std::string teamIdentifier;  // the leaf certificate's organisational unit; empty when signed ad hoc
  std::string anchor;          // "apple generic" (chain ends in Apple's root), "apple" (Apple's own code) or "adhoc"
  bool operator==(const CodeSignature&) const = default;
};

// Appends `signature` to the file, replacing the block of an earlier signing. False when the file cannot be written.
bool signExecutable(const std::filesystem::path& executable, const CodeSignature& signature);

// Reads the block at the end of an open file; nothing when the file carries none or a damaged one. Does not move the
// descriptor's offset.
std::optional<CodeSignature> readCodeSignature(int descriptor);

// Whether what stands before the block is what was signed. Reads the whole file.
bool signedCodeIsIntact(int descriptor);

}  // namespace halvo::sim
