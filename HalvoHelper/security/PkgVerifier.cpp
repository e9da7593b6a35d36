#include "HalvoHelper/security/PkgVerifier.h"

#include <utility>

#include "HalvoHelper/text/Text.h"

namespace halvo {

PkgVerifier::PkgVerifier(std::shared_ptr<const ProcessRunner> runner) : runner_(std::move(runner)) {}

HalvoPkgTrust PkgVerifier::verify(const std::string& pkgPath, std::string_view teamID) const {
  const ProcessResult check = runner_->run("/usr/sbin/pkgutil", {"--check-signature", pkgPath});
  if (halvoIsAllWhitespace(check.output)) {
    return Distrusted{HalvoPkgDistrust::unreadable, "pkgutil rc=" + std::to_string(check.code) + ", no output"};
  }
  // The exit status does not count: the report alone decides, and it must hold everything that makes a package ours.
  return halvoCheckPkgReport(check.output, teamID);
}

}  // namespace halvo
