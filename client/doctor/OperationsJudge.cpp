// What installs and removals left behind or are stuck in.
#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "HalvoHelper/system/ProductPaths.h"
#include "client/RefusalText.h"
#include "client/doctor/Findings.h"
#include "client/doctor/ShortText.h"

namespace halvo {
namespace {

// Longer than they take on a slow Mac with a large package.
constexpr Seconds kLongForInstaller(600);
constexpr Seconds kLongForOthers(60);

// As long as snapshots are kept; what is older is the affair of nobody any more.
constexpr Seconds kRecent(std::chrono::hours(24 * 7));

Findings judgeStaging(const Examination& seen) {
  if (seen.staging.sight != Sight::present) return {};
  if (seen.tools && !seen.tools->empty()) return {};  // An install is under way.
  return {{"staging-left", std::string(kInstallStagingRoot) + " is left of an install.",
           "Unless an install runs at this moment, one was broken off. The next install clears it away and may be "
           "refused once for it (staging_failed): install, and once more if need be."}};
}

Findings judgeTools(const Examination& seen) {
  if (!seen.tools) return {};
  Findings all;
  for (const Tool& tool : *seen.tools) {
    if (tool.age < (tool.name == "installer" ? kLongForInstaller : kLongForOthers)) continue;
    const std::string process = std::to_string(tool.process);
    std::string hint =
        "The helper waits for it without a limit and holds every other change back. Look what it does with "
        "\"ps -o etime,command -p ";
    hint += process;
    hint += "\". Ending it with \"sudo kill ";
    hint += process;
    hint += "\" fails its step; a failed installer is rolled back.";
    all.push_back(
        {"tool-slow",
         "The helper's " + tool.name + ", process " + process + ", has been running for " + ageText(tool.age) + ".",
         std::move(hint)});
  }
  return all;
}

std::string packageRefusal(const std::string& reason) {
  return refusalText("untrusted_package", R"({"reason":")" + reason + "\"}", {});
}

// For what stands in the line behind the words "REFUSED untrusted package", as " (wrong_team): ...".
std::string untrustedHint(std::string_view rest) {
  constexpr std::string_view kBegin = " (";
  constexpr std::string_view kOfCodes = "abcdefghijklmnopqrstuvwxyz_";
  if (rest.starts_with(kBegin)) {
    rest.remove_prefix(kBegin.size());
    const std::string_view reason = rest.substr(0, rest.find(')'));
    const bool isCode = !reason.empty() && reason.find_first_not_of(kOfCodes) == std::string_view::npos;
    if (isCode) return packageRefusal(std::string(reason));
  }
  return "The package was refused and nothing was changed. Use a package from the maker.";
}

std::string hintFor(std::string_view message) {
  constexpr std::string_view kUntrusted = "REFUSED untrusted package";
  if (message.starts_with(kUntrusted)) return untrustedHint(message.substr(kUntrusted.size()));
  if (message.starts_with("REFUSED: could not create staging dir")) {
    return "The helper cannot write to /var/db/halvo: the disk is full, or something else stands in its place. Put "
           "that right and install again.";
  }
  if (message.starts_with("REFUSED")) {
    return packageRefusal("staging_failed");
  }
  if (message.starts_with("refusing downgrade")) {
    return "A newer driver is installed than the manifest names. Use a newer package, or remove the product first.";
  }
  if (message.starts_with("installer failed")) {
    return "What had been saved was copied back. /var/log/install.log says why the installer failed; install again "
           "once that is put right.";
  }
  return "Look what holds the parts that the line names, and remove the product again.";
}

Findings judgeLog(const LogView& log) {
  if (log.sight == Sight::present && log.item.kind != ItemKind::file) {
    return {
        {"log-kind", std::string(log.path) + " is " + wordFor(log.item.kind) + ", not a file.",
         "The helper's lines go astray, or where somebody else wants them. Look whose it is and remove it: the helper "
         "makes the log again."}};
  }
  if (!log.refusal || log.refusal->overcome) return {};
  if (log.refusal->age && *log.refusal->age > kRecent) return {};
  const bool isInstall = log.path == std::string_view(kInstallLogPath);
  return {{isInstall ? "install-refused" : "removal-incomplete",
           std::string(isInstall ? "The last install did not succeed" : "The last removal was not complete") + " (" +
               log.refusal->date + "): " + log.refusal->message,
           hintFor(log.refusal->message)}};
}

}  // namespace

Findings judgeOperations(const Examination& seen) {
  Findings all = judgeTools(seen);
  std::ranges::move(judgeStaging(seen), std::back_inserter(all));
  for (const LogView& log : seen.logs) std::ranges::move(judgeLog(log), std::back_inserter(all));
  return all;
}

}  // namespace halvo
