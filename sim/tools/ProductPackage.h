// Packages of the product.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sim/tools/Archive.h"

namespace halvo::sim {

struct PackageOrder {
  std::string package{};  // the file to be made
  std::string version{};
  std::string report{};  // the file with the signature report that travels in it
  std::optional<std::string> postinstall{};
  // Only so many bytes of the payload's archive are in the package, so that installing it fails half way.
  std::optional<std::size_t> payloadBytes{};
};

// A sentence that says what is wrong and what to do, and the exit status that goes with it: 64 for an order that makes
// no sense, 66 for an input that cannot be read, 73 for a package that cannot be written.
struct PackageProblem : std::runtime_error {
  PackageProblem(const std::string& sentence, int exitStatus) : std::runtime_error(sentence), status(exitStatus) {}
  int status;
};

// Makes a real flat package. The same order makes the same members; only the table of contents differs, because it
// names the time at which it was made. Throws PackageProblem or ArchiveError.
void buildPackage(const PackageOrder& order);

// What a package installs: the driver bundle, the broker and the two property lists with the folders above them, in the
// order of their installation. `brokerProgram` holds the bytes of the broker; every version has files of its own
// content.
std::vector<CpioEntry> productFiles(const std::string& version, std::string_view brokerProgram);

}  // namespace halvo::sim
