#include "sim/tools/SystemTools.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <string_view>
#include <system_error>

#include "sim/tools/Archive.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/Receipts.h"

namespace halvo::sim {
namespace {

constexpr std::string_view kStatusKey = "   Status: ";
constexpr std::string_view kGoodStatuses[] = {"signed by a developer certificate issued by Apple for distribution",
                                              "signed by a certificate trusted by macOS", "signed Apple Software"};

std::string firstLine(const std::filesystem::path& package) {
  return "Package \"" + package.filename().string() + "\":\n";
}

// The report names the file that it was made for; the package may have another name here.
std::string fitted(std::string_view report, const std::filesystem::path& package) {
  const std::size_t lineEnd = report.find('\n');
  const std::string_view rest = lineEnd == std::string_view::npos ? std::string_view() : report.substr(lineEnd + 1);
  return firstLine(package) + std::string(rest);
}

std::string_view statusIn(std::string_view report) {
  const std::size_t begin = report.find(kStatusKey);
  if (begin == std::string_view::npos) return {};
  const std::string_view rest = report.substr(begin + kStatusKey.size());
  return rest.substr(0, rest.find('\n'));
}

bool isGoodSignature(std::string_view status) { return std::ranges::count(kGoodStatuses, status) > 0; }

int checkSignature(const std::filesystem::path& file, const ToolStreams& streams) {
  std::error_code problem;
  if (!std::filesystem::exists(file, problem)) {
    streams.err << "Package does not exist: " << file.string() << "\n";
    return 1;
  }
  try {
    const FlatPackage package = FlatPackage::read(file);
    const auto carried = package.member(kSignatureReportMember);
    const std::string report = carried ? fitted(*carried, file) : firstLine(file) + "   Status: no signature\n";
    streams.out << report;
    return isGoodSignature(statusIn(report)) ? 0 : 1;
  } catch (const ArchiveError& unreadable) {
    streams.err << firstLine(file) << "   Status: package is invalid (" << unreadable.what() << ")\n";
    return 1;
  }
}

int forget(const std::string& identifier, const Receipts& receipts, const ToolStreams& streams) {
  if (!receipts.forget(identifier)) {
    streams.err << "No receipt for '" << identifier << "' found at '/'.\n";
    return 1;
  }
  streams.out << "Forgot package '" << identifier << "' on '/'.\n";
  return 0;
}

int list(const Receipts& receipts, const ToolStreams& streams) {
  for (const std::string& identifier : receipts.identifiers()) streams.out << identifier << "\n";
  return 0;
}

}  // namespace

int pkgutilTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                const ToolStreams& streams) {
  if (arguments.size() == 2 && arguments[0] == "--check-signature") return checkSignature(arguments[1], streams);
  if (arguments.size() == 2 && arguments[0] == "--forget") return forget(arguments[1], Receipts(root), streams);
  if (arguments.size() == 1 && arguments[0] == "--pkgs") return list(Receipts(root), streams);
  streams.err << "Usage: pkgutil --check-signature PATH | --forget PKGID | --pkgs\n";
  return 1;
}

}  // namespace halvo::sim
