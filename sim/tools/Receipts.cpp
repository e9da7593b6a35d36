#include "sim/tools/Receipts.h"

#include <algorithm>
#include <system_error>

#include "sim/support/Files.h"
#include "sim/support/SimClock.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

constexpr const char* kReceiptExtension = ".plist";
constexpr const char* kListExtension = ".bom";

std::string receiptText(const Receipt& receipt) {
  return propertyList(
      "\t<key>InstallDate</key>\n\t<date>" + universalTime() + "</date>\n" + plistString("InstallPrefixPath", "/") +
      plistString("InstallProcessName", "installer") + plistString("PackageFileName", receipt.fileName) +
      plistString("PackageIdentifier", receipt.identifier) + plistString("PackageVersion", receipt.version));
}

std::string listText(const Receipt& receipt) {
  std::string text = ".\n";
  for (const std::string& path : receipt.paths) text += "./" + path + "\n";
  return text;
}

}  // namespace

Receipts::Receipts(const std::filesystem::path& root) : folder_(root / "private/var/db/receipts") {}

bool Receipts::keep(const Receipt& receipt) const {
  std::error_code problem;
  std::filesystem::create_directories(folder_, problem);
  return writeWhole(folder_ / (receipt.identifier + kListExtension), listText(receipt)) &&
         writeWhole(folder_ / (receipt.identifier + kReceiptExtension), receiptText(receipt));
}

bool Receipts::forget(const std::string& identifier) const {
  if (!std::ranges::count(identifiers(), identifier)) return false;
  std::error_code problem;
  std::filesystem::remove(folder_ / (identifier + kListExtension), problem);
  return std::filesystem::remove(folder_ / (identifier + kReceiptExtension), problem);
}

std::vector<std::string> Receipts::identifiers() const {
  std::vector<std::string> found;
  std::error_code problem;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, problem)) {
    if (entry.path().extension() == kReceiptExtension) found.push_back(entry.path().stem());
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace halvo::sim
