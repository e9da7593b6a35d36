#include "client/RefusalText.h"

#include <algorithm>
#include <array>

#include "client/VisibleText.h"
#include "platform/JSONObject.h"

namespace halvo {
namespace {

struct Row {
  std::string_view key;
  std::string_view text;
};

constexpr auto kPackageReasons = std::to_array<Row>({
    {"unreadable", "The system could not read the package. Download it again."},
    {"unsigned", "The package is not signed. Use a package from the maker."},
    {"not_notarized", "Apple has not notarised the package. Use a released package."},
    {"not_developer_id", "The package is not signed as a Developer ID installer. Use a released package."},
    {"wrong_team", "The package is signed by somebody else. Use a package from the maker."},
    {"chain_truncated", "The package's certificate chain is incomplete. Use a released package."},
    {"unknown_authority", "The package's certificates do not come from Apple. Use a package from the maker."},
    {"staging_failed",
     "The helper could not take the package in: it must be a regular file, no link, of at most 256 MiB, in a folder "
     "that the helper may read, and the disk must have room for a copy. Put it into another folder than Downloads, "
     "Desktop or Documents and try again."},
});

constexpr auto kCodes = std::to_array<Row>({
    {"audio_active",
     "Audio is running and would be interrupted. Stop it, or try again with --accept-audio-interruption. Nothing was "
     "changed."},
    {"rolled_back",
     "The installer failed, and what had been saved of the previous installation was copied back. /var/log/install.log "
     "says why it failed. The helper's log: "},
    {"install_failed", "The install failed. /var/log/install.log says why. The helper's log: "},
    {"incomplete", "Something could not be removed. Try again, or remove by hand what the log names: "},
    {"downgrade", "The manifest names an older driver than the installed one. Nothing was changed. "},
    {"untrusted_package", "The package was refused and nothing was changed. "},
});

template <std::size_t N>
std::string_view textFor(const std::array<Row, N>& rows, std::string_view key) {
  const auto found = std::ranges::find(rows, key, &Row::key);
  return found == rows.end() ? std::string_view() : found->text;
}

std::string member(const std::string& reply, std::string_view key) {
  const auto object = halvoReadJSONObject(reply);
  if (!object) return "?";
  const auto found = object->find(key);
  const auto* text = found == object->end() ? nullptr : std::get_if<std::string>(&found->second);
  return text == nullptr ? "?" : visibleText(*text);
}

std::string versionsOf(const std::string& reply) {
  return "Installed: " + member(reply, "installed") + "; in the manifest: " + member(reply, "incoming") + ".";
}

// What the general text of a code needs from the rest of the reply.
std::string detailFor(std::string_view code, const std::string& reply) {
  if (code == "rolled_back" || code == "install_failed" || code == "incomplete") return member(reply, "log_path");
  if (code == "downgrade") return versionsOf(reply);
  if (code != "untrusted_package") return {};
  const std::string reason = member(reply, "reason");
  const std::string_view known = textFor(kPackageReasons, reason);
  return known.empty() ? "The reason is " + reason + "." : std::string(known);
}

// The cause where the reply stands for several and what was seen tells which one it is; otherwise empty.
std::string closerCause(std::string_view code, const std::string& reply, const Seen& seen) {
  const bool notTakenIn = code == "untrusted_package" && member(reply, "reason") == "staging_failed";
  if (notTakenIn && seen.diskIsFull) {
    return "The disk is full: it has no room for a copy of the package. Nothing was changed. Make room and try again.";
  }
  if (notTakenIn && seen.stagingWasLeft) {
    return "An install that was broken off had left its copy of a package behind, which this attempt removed. Nothing "
           "else was changed. Try again.";
  }
  if (code == "rolled_back" && !seen.productWasInstalled) {
    return "The installer failed. Nothing of the product had been installed, so nothing was copied back; what the "
           "installer left, \"halvo-app prepare-removal\" removes. /var/log/install.log says why it failed. The "
           "helper's log: " +
           member(reply, "log_path");
  }
  if (code == "downgrade" && !seen.manifestNamesVersion) {
    return "The manifest names no \"driver_version\", and version " + member(reply, "installed") +
           " is installed. Nothing was changed. Use the manifest that came with the package.";
  }
  return {};
}

}  // namespace

std::string refusalText(std::string_view code, const std::string& reply, const Seen& seen) {
  std::string closer = closerCause(code, reply, seen);
  if (!closer.empty()) return closer;
  return std::string(textFor(kCodes, code)) + detailFor(code, reply);
}

}  // namespace halvo
