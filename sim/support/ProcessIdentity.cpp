#include "sim/support/ProcessIdentity.h"

#include <sstream>
#include <string>

#include "sim/support/WholeFile.h"

namespace halvo::sim {

std::optional<ProcessFacts> processFacts(pid_t pid) {
  if (pid <= 0) return std::nullopt;
  const std::string text = wholeFile("/proc/" + std::to_string(pid) + "/stat");
  // The program's name stands in parentheses and may itself hold blanks and parentheses: count from the last one.
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd == std::string::npos) return std::nullopt;
  std::istringstream fields(text.substr(nameEnd + 1));
  ProcessFacts facts;
  fields >> facts.state >> facts.parent;
  std::string unused;
  constexpr int kFieldsBetween = 17;
  for (int i = 0; i < kFieldsBetween; ++i) fields >> unused;
  if (!(fields >> facts.startTime)) return std::nullopt;
  return facts;
}

std::optional<std::uint32_t> processVersion(pid_t pid) {
  const auto facts = processFacts(pid);
  return facts ? std::optional(static_cast<std::uint32_t>(facts->startTime)) : std::nullopt;
}

}  // namespace halvo::sim
