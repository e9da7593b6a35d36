#include <algorithm>
#include <iterator>
#include <string_view>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/doctor/Findings.h"
#include "client/doctor/ShortText.h"

namespace halvo {
namespace {

constexpr const char* kInstallAgain = "Install the package again.";
constexpr unsigned kWritableByGroupOrOthers = 022;
constexpr unsigned kWritableByOthers = 002;

bool isAt(const Part& part, std::string_view path) { return part.rule.path == path; }

bool comesWithThePackage(const Part& part) {
  return std::ranges::any_of(kInstalledParts, [&](const char* path) { return isAt(part, path); });
}

bool isThere(const Part& part) { return part.item.sight != Sight::absent; }

// How to get a sound one.
std::string remedyFor(const Part& part) {
  return isAt(part, kApplicationPath) ? "Put a fresh Halvo.app into /Applications." : kInstallAgain;
}

std::string meaningOfMode(const Part& part) {
  if ((part.item.mode & kWritableByGroupOrOthers) != 0) {
    return "Others than root can change what runs with the system's rights. ";
  }
  const bool allowsMore = (part.item.mode & ~part.rule.mode) != 0;
  return allowsMore ? "It allows more than it has to. " : "Who needs it may not be able to use it. ";
}

Findings judgeOwnerAndMode(const Part& part) {
  const Item& item = part.item;
  const std::string path = part.rule.path;
  if (!part.rule.ownedByRoot) {
    if ((item.mode & kWritableByOthers) == 0) return {};
    return {{"part-mode", path + " has mode " + modeText(item.mode) + ": everybody can change it.",
             "Any program of any user can change what stands there. Look who allowed it. " + remedyFor(part)}};
  }
  Findings found;
  if (item.owner != 0 || item.group != 0) {
    found.push_back({"part-owner", path + " belongs to " + ownerText(item.owner, item.group) + ", not to root:wheel.",
                     std::string("Others than root may be able to change what runs with the system's rights. Look who "
                                 "changed it. ") +
                         kInstallAgain});
  }
  if (item.mode != part.rule.mode) {
    found.push_back({"part-mode", path + " has mode " + modeText(item.mode) + ", not " + modeText(part.rule.mode) + ".",
                     meaningOfMode(part) + kInstallAgain});
  }
  return found;
}

Findings judgeWhatIsThere(const Part& part) {
  if (part.item.sight != Sight::present) return {};
  const std::string path = part.rule.path;
  if (part.item.kind != part.rule.kind) {
    return {{"part-kind", path + " is " + wordFor(part.item.kind) + ", not " + wordFor(part.rule.kind) + ".",
             "Nobody but the product should put something there, and this may lead elsewhere. Look whose it is and "
             "remove it. " +
                 remedyFor(part)}};
  }
  Findings found = judgeOwnerAndMode(part);
  if (part.rule.versionFile != nullptr && part.versionSight == Sight::absent) {
    found.push_back({"part-version", path + " has no version that can be read.",
                     "Its property list is missing or damaged, so that the versions of packages cannot be compared "
                     "with it. " +
                         remedyFor(part)});
  }
  return found;
}

Findings judgeReceipt(const Part& receipt, bool anyPart) {
  if (isThere(receipt) == anyPart) return {};
  if (anyPart) {
    return {{"receipt-missing", std::string("The system has no record of the package ") + kPackageIdentifier + ".",
             std::string("The parts did not come by a package, or somebody removed the record. ") + kInstallAgain}};
  }
  return {
      {"receipt-left",
       std::string("The system has a record of the package ") + kPackageIdentifier + ", of which nothing is installed.",
       std::string("The parts were removed by hand. Install the package again, or remove the record with \"sudo "
                   "pkgutil --forget ") +
           kPackageIdentifier + "\"."}};
}

Findings judgeMissing(const Part& part, bool anyPart) {
  if (isThere(part)) return {};
  if (isAt(part, kApplicationPath)) {
    return {{"application-missing", std::string(part.rule.path) + " is missing.",
             "launchd takes the helper out of the application. Put Halvo.app into /Applications and open it."}};
  }
  if (!anyPart || !comesWithThePackage(part)) return {};
  return {
      {"part-missing", std::string(part.rule.path) + " is missing.",
       std::string("The product is not whole: an install or a removal was cut off, or somebody removed the part. ") +
           kInstallAgain}};
}

}  // namespace

Findings judgeParts(const Examination& seen) {
  const bool anyPart =
      std::ranges::any_of(seen.parts, [](const Part& part) { return comesWithThePackage(part) && isThere(part); });
  Findings all;
  if (!anyPart) {
    all.push_back({"nothing-installed", "None of the product's system parts is installed.",
                   "Without them there is no audio device. Install the package: \"halvo-app install PACKAGE --manifest "
                   "FILE\"."});
  }
  for (const Part& part : seen.parts) {
    Findings found = judgeMissing(part, anyPart);
    std::ranges::copy(judgeWhatIsThere(part), std::back_inserter(found));
    if (isAt(part, kPackageReceiptPath)) std::ranges::copy(judgeReceipt(part, anyPart), std::back_inserter(found));
    std::ranges::move(found, std::back_inserter(all));
  }
  return all;
}

}  // namespace halvo
