#include "sim/tools/PackageCommand.h"

#include <sysexits.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "sim/tools/Archive.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/ProductFiles.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

constexpr std::string_view kUsage =
    "halvo-sim package OUT.pkg --version V --report FILE [--postinstall FILE] [--truncate-payload BYTES]";

// What ends the command: a sentence for the person who typed it, and the exit status.
struct Refusal : std::runtime_error {
  Refusal(const std::string& sentence, int exitStatus) : std::runtime_error(sentence), status(exitStatus) {}
  int status;
};

Refusal wrongUsage(const std::string& why) { return {why + "; call it as: " + std::string(kUsage), EX_USAGE}; }

struct Order {
  std::string package;
  std::string version;
  std::string report;
  std::optional<std::string> postinstall{};
  std::optional<std::size_t> payloadSize{};
};

std::size_t byteCount(const std::string& word) {
  std::size_t count = 0;
  const char* end = word.data() + word.size();
  const auto parsed = std::from_chars(word.data(), end, count);
  if (parsed.ec == std::errc{} && parsed.ptr == end && !word.empty()) return count;
  throw wrongUsage("\"" + word + "\" is no number of bytes");
}

bool isOption(const std::string& word) {
  return word == "--version" || word == "--report" || word == "--postinstall" || word == "--truncate-payload";
}

// The options with their values; the path of the package stands under the empty name.
std::map<std::string, std::string> sorted(const std::vector<std::string>& words) {
  std::map<std::string, std::string> found;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool option = isOption(words[i]);
    if (!option && words[i].starts_with("--")) throw wrongUsage("\"" + words[i] + "\" is no option");
    if (option && i + 1 == words.size()) throw wrongUsage(words[i] + " has no value");
    const std::string name = option ? words[i] : "";
    if (option) ++i;
    if (!found.emplace(name, words[i]).second) {
      throw wrongUsage(option ? name + " is given twice" : "\"" + words[i] + "\" is a second package");
    }
  }
  return found;
}

std::string required(const std::map<std::string, std::string>& found, const std::string& name,
                     const std::string& complaint) {
  const auto value = found.find(name);
  if (value == found.end() || value->second.empty()) throw wrongUsage(complaint);
  return value->second;
}

Order parse(const std::vector<std::string>& arguments) {
  const auto found = sorted(arguments);
  Order order{.package = required(found, "", "No package file is named"),
              .version = required(found, "--version", "No --version is given"),
              .report = required(found, "--report", "No signature report is given with --report")};
  if (found.contains("--postinstall")) order.postinstall = found.at("--postinstall");
  if (found.contains("--truncate-payload")) order.payloadSize = byteCount(found.at("--truncate-payload"));
  return order;
}

std::string inputFile(const std::string& path) {
  std::error_code problem;
  std::ifstream stream(path, std::ios::binary);
  // A folder opens as well, and fails only when it is read.
  if (!stream || std::filesystem::is_directory(path, problem)) {
    throw Refusal("\"" + path + "\" cannot be read; name a file that exists and is readable.", EX_NOINPUT);
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string packageInfo(const Order& order, std::size_t files) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<pkg-info format-version=\"2\" identifier=\"" +
         std::string(kProductPackageIdentifier) + "\" version=\"" + xmlEscaped(order.version) +
         "\" install-location=\"/\" auth=\"root\">\n    <payload numberOfFiles=\"" + std::to_string(files) + "\"/>\n" +
         (order.postinstall ? "    <scripts>\n        <postinstall file=\"./postinstall\"/>\n    </scripts>\n" : "") +
         "</pkg-info>\n";
}

// The archive is cut, not its compressed form: decompressing a stream that breaks off loses more than what is missing,
// and where an installation fails would depend on how well the files compress.
std::string payload(const Order& order, const std::vector<CpioEntry>& files) {
  const std::string whole = cpioArchive(files);
  if (!order.payloadSize) return gzipped(whole);
  if (*order.payloadSize >= whole.size()) {
    throw wrongUsage("The payload has only " + std::to_string(whole.size()) + " bytes, give --truncate-payload fewer");
  }
  return gzipped(whole.substr(0, *order.payloadSize));
}

void build(const Order& order) {
  const std::vector<CpioEntry> files = productFiles(order.version, inputFile(HALVO_BROKER_PROGRAM));
  std::map<std::string, std::string> members = {{kPackageInfoMember, packageInfo(order, files.size())},
                                                {kPayloadMember, payload(order, files)},
                                                {kSignatureReportMember, inputFile(order.report)}};
  if (order.postinstall) {
    members[kScriptsMember] =
        gzippedCpio({{.path = "./postinstall", .mode = 0755, .content = inputFile(*order.postinstall)}});
  }
  try {
    FlatPackage(std::move(members)).write(order.package);
  } catch (const ArchiveError& problem) {
    throw Refusal("\"" + order.package + "\" cannot be written (" + problem.what() +
                      "); name a file in a folder that exists and has room.",
                  EX_CANTCREAT);
  }
}

}  // namespace

int packageCommand(const std::vector<std::string>& arguments) {
  try {
    build(parse(arguments));
    return EX_OK;
  } catch (const Refusal& refusal) {
    std::cerr << "halvo-sim package: " << refusal.what() << "\n";
    return refusal.status;
  } catch (const ArchiveError& problem) {
    std::cerr << "halvo-sim package: the package cannot be made: " << problem.what() << "\n";
    return EX_SOFTWARE;
  }
}

}  // namespace halvo::sim
