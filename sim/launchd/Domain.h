// The domains in which launchd keeps jobs, and how a job is named in one.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvo::sim {

// "system", "gui/501", or a job in one of them: "system/com.halvo.broker", "gui/501/com.halvo.daemon".
struct JobTarget {
  std::string domain;
  std::string label;  // empty when the domain itself is meant
  bool operator==(const JobTarget&) const = default;
};

// Nothing when the text names no kind of domain that exists here.
std::optional<JobTarget> parseJobTarget(std::string_view text);

// The uids in the file `sessions`, one a line: whoever is logged in at the screen now.
std::vector<uid_t> guiSessions(const std::filesystem::path& sessions);

// "system" always exists, "gui/UID" while that user is logged in.
bool domainExists(const std::string& domain, const std::filesystem::path& sessions);

std::string guiDomain(uid_t user);

// As whom the jobs of the domain run.
uid_t domainUser(const std::string& domain);

}  // namespace halvo::sim
