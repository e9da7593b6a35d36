#include "sim/machine/MachineFiles.h"

#include <fstream>
#include <regex>
#include <system_error>

namespace halvo::sim {
namespace {

constexpr const char* kListName = "sim-machine-files";

// Source, destination, octal mode, and "-" or IDENTIFIER,TEAM,ANCHOR, with tabs between.
std::optional<MachineFile> parseLine(const std::string& line) {
  static const std::regex form(R"(([^\t]+)\t([^/\t][^\t]*)\t([0-7]{1,4})\t(?:-|([^,\t]+),([^,\t]*),([^,\t]+)))");
  constexpr int kOctal = 8;
  std::smatch field;
  if (!std::regex_match(line, field, form)) return std::nullopt;
  MachineFile file{.source = field.str(1),
                   .destination = field.str(2),
                   .mode = static_cast<unsigned>(std::stoul(field[3], nullptr, kOctal)),
                   .signature = std::nullopt};
  if (field[4].matched) {
    file.signature = CodeSignature{.identifier = field[4], .teamIdentifier = field[5], .anchor = field[6]};
  }
  return file;
}

MachineProblem problem(const std::string& what, const std::error_code& error) {
  return {what + ": " + error.message() + "."};
}

}  // namespace

std::variant<std::vector<MachineFile>, MachineProblem> machineFilesOfThisBuild() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return problem("/proc/self/exe cannot be read", error);
  const auto list = program.parent_path() / kListName;
  std::ifstream in(list, std::ios::binary);
  if (!in) return MachineProblem{"The list of the machine's files is missing: " + list.string() + ". Build halvo-sim."};
  std::vector<MachineFile> files;
  for (std::string line; std::getline(in, line);) {
    const auto file = parseLine(line);
    if (!file) return MachineProblem{"The list of the machine's files has a line that makes no sense: " + line};
    files.push_back(*file);
  }
  if (files.empty()) return MachineProblem{"The list of the machine's files is empty; build halvo-sim again."};
  return files;
}

std::optional<MachineProblem> layIn(const MachineFile& file, const std::filesystem::path& root) {
  const auto target = root / file.destination;
  std::error_code error;
  std::filesystem::create_directories(target.parent_path(), error);
  // A program that is running can be replaced but not rewritten.
  if (!error) std::filesystem::remove(target, error);
  if (!error) std::filesystem::copy_file(file.source, target, error);
  if (error) return problem(file.source.string() + " cannot be copied to " + target.string(), error);
  // Signing rewrites the end of the file, whatever mode it is to have.
  std::filesystem::permissions(target, std::filesystem::perms(0600), error);
  if (file.signature && !signExecutable(target, *file.signature)) {
    return MachineProblem{target.string() + " cannot be signed."};
  }
  std::filesystem::permissions(target, std::filesystem::perms(file.mode), error);
  if (error) return problem("The mode of " + target.string() + " cannot be set", error);
  return std::nullopt;
}

}  // namespace halvo::sim
