#include "tests/oracle/Decisions.h"

#include <memory>
#include <set>
#include <utility>

#include "HalvoHelper/install/Versions.h"
#include "HalvoHelper/removal/AppBundleGuard.h"
#include "HalvoHelper/security/PkgSignature.h"
#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/security/PkgVerifier.h"
#include "HalvoHelper/system/Launchctl.h"
#include "HalvoHelper/system/LoginUsers.h"
#include "HalvoHelper/system/ProcessRunner.h"
#include "HalvoHelper/text/Overloaded.h"

namespace halvo {
namespace {

// Every tool prints the same.
class PrintingRunner final : public ProcessRunner {
 public:
  explicit PrintingRunner(ProcessResult result) : result_(std::move(result)) {}

  ProcessResult run(const std::string&, const std::vector<std::string>&) const override { return result_; }

 private:
  const ProcessResult result_;
};

// A machine where these users are logged in, as far as launchd is asked about it.
class LoginRunner final : public ProcessRunner {
 public:
  LoginRunner(ProcessResult listing, std::set<std::string> domains)
      : listing_(std::move(listing)), domains_(std::move(domains)) {}

  ProcessResult run(const std::string& tool, const std::vector<std::string>& arguments) const override {
    if (tool == "/usr/bin/dscl") return listing_;
    return {.code = domains_.contains(arguments.back()) ? 0 : 112, .output = ""};
  }

 private:
  const ProcessResult listing_;
  const std::set<std::string> domains_;
};

std::int32_t statusOf(const std::string& word) { return static_cast<std::int32_t>(numberOf(word)); }

Words wordsOf(const HalvoPkgTrust& verdict) {
  return std::visit(
      Overloaded{[](const Trusted& trusted) {
                   return Words{"trusted", wordOfText(trusted.leafCommonName)};
                 },
                 [](const Distrusted& distrusted) {
                   return Words{std::string(halvoRawValue(distrusted.reason)), wordOfText(distrusted.detail)};
                 }},
      verdict);
}

}  // namespace

Words decideTrust(const Words& question) {
  HalvoPkgSignature signature{.status = textOf(question.at(1)), .notarization = textOf(question.at(2)), .chain = {}};
  for (std::size_t at = 3; at < question.size(); at += 3) {
    signature.chain.push_back({.position = numberOf(question.at(at)),
                               .commonName = textOf(question.at(at + 1)),
                               .sha256 = textOf(question.at(at + 2))});
  }
  return wordsOf(halvoCheckPkgTrust(signature, textOf(question.at(0))));
}

Words decideReport(const Words& question) {
  const std::string report = textOf(question.at(2));
  const auto runner = std::make_shared<PrintingRunner>(ProcessResult{statusOf(question.at(1)), report});
  const HalvoPkgSignature signature = halvoParsePkgSignature(report);

  Words answer = wordsOf(PkgVerifier(runner).verify("/staging/incoming.pkg", textOf(question.at(0))));
  answer.insert(answer.end(), {wordOfText(signature.status), wordOfText(signature.notarization)});
  for (const HalvoPkgCert& each : signature.chain) {
    answer.push_back(std::to_string(each.position));
    answer.push_back(wordOfText(each.commonName));
    answer.push_back(wordOfText(each.sha256));
  }
  return answer;
}

Words decideOrder(const Words& question) {
  const ComparisonResult order = halvoCompareVersions(textOf(question.at(0)), textOf(question.at(1)));
  return {std::to_string(static_cast<int>(order))};
}

Words decideDowngrade(const Words& question) {
  switch (halvoDowngradeDecision(optionalTextOf(question.at(0)), textOf(question.at(1)))) {
    case DowngradeDecision::install:
      return {"install"};
    case DowngradeDecision::overwrite:
      return {"overwrite"};
    case DowngradeDecision::refuse:
      return {"refuse"};
  }
  return {"none"};
}

Words decideAccounts(const Words& question) {
  const std::string listing = textOf(question.at(0));
  std::set<std::string> domains;
  for (std::size_t at = 2; at < question.size(); ++at) domains.insert("gui/" + question.at(at));
  const auto runner =
      std::make_shared<LoginRunner>(ProcessResult{statusOf(question.at(1)), listing}, std::move(domains));

  return {wordOfText(halvoGuiDomainsJSON(halvoParseLoginUids(listing))),
          wordOfText(halvoGuiDomainsJSON(halvoEnumerateActiveGuiDomains(Launchctl(runner), *runner)))};
}

Words decideBundlePath(const Words& question) {
  const std::string path = textOf(question.at(0));
  std::int64_t existing = numberOf(question.at(1));
  const std::optional<std::string> resolved = optionalTextOf(question.at(2));
  Words asked;
  // The lowest bit tells of the marker that is asked for next.
  const bool accepted = halvoValidateAppBundlePath(path, [&](const std::string& marker) {
    asked.push_back(wordOfText(marker));
    return (std::exchange(existing, existing / 2) & 1) != 0;
  });
  const auto safe = halvoResolvedBundlePathIfSafe(path, [&](const std::string&) { return resolved; });

  Words answer = {wordOfTruth(accepted), safe ? wordOfText(*safe) : "-"};
  answer.insert(answer.end(), asked.begin(), asked.end());
  return answer;
}

}  // namespace halvo
