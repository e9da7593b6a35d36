#include "sim/machine/MachineFiles.h"

#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace halvo::sim {
namespace {

constexpr int kOctal = 8;
constexpr const char* kListName = "sim-machine-files";

std::vector<std::string> fieldsOf(const std::string& line, char separator) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, separator);) fields.push_back(field);
  return fields;
}

std::optional<unsigned> octal(const std::string& text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, kOctal);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<MachineFile> parseLine(const std::string& line) {
  const auto fields = fieldsOf(line, '\t');
  if (fields.size() != 4) return std::nullopt;
  const auto mode = octal(fields[2]);
  const std::filesystem::path destination(fields[1]);
  if (!mode || destination.empty() || destination.is_absolute()) return std::nullopt;
  MachineFile file{.source = fields[0], .destination = destination, .mode = *mode, .signature = std::nullopt};
  if (fields[3] == "-") return file;
  const auto words = fieldsOf(fields[3], ',');
  if (words.size() != 3) return std::nullopt;
  file.signature = CodeSignature{.identifier = words[0], .teamIdentifier = words[1], .anchor = words[2]};
  return file;
}

MachineProblem problem(const std::string& what, const std::error_code& error) {
  return {what + ": " + error.message() + "."};
}

}  // namespace

std::variant<std::vector<MachineFile>, MachineProblem> parseMachineFiles(std::string_view text) {
  std::vector<MachineFile> files;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) {
    const auto file = parseLine(line);
    if (!file) return MachineProblem{"The list of the machine's files has a line that makes no sense: " + line};
    files.push_back(*file);
  }
  if (files.empty()) return MachineProblem{"The list of the machine's files is empty; build halvo-sim again."};
  return files;
}

std::variant<std::vector<MachineFile>, MachineProblem> machineFilesOfThisBuild() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return problem("/proc/self/exe cannot be read", error);
  const auto list = program.parent_path() / kListName;
  std::ifstream in(list, std::ios::binary);
  if (!in) return MachineProblem{"The list of the machine's files is missing: " + list.string() + ". Build halvo-sim."};
  return parseMachineFiles(std::string{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
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
