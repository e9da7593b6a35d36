#include "sim/tools/CallLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "sim/support/StateRoot.h"

namespace halvo::sim {
namespace {

std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  ::gmtime_r(&now, &parts);
  std::string text(sizeof "2026-02-11T09:30:12Z", '\0');
  text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts));
  return text;
}

std::string callLine(std::string_view tool, const std::vector<std::string>& arguments, int status) {
  const nlohmann::ordered_json call = {
      {"time", utcNow()}, {"tool", tool}, {"arguments", arguments}, {"status", status}};
  // An argument need not be UTF-8, and a call with such an argument is worth a line too.
  return call.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool appendWhole(const std::string& path, const std::string& line) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor < 0) return false;
  // Users run these tools too, and the umask of whoever ran the first one must not shut them out. Only the owner may
  // change the mode, and once is enough.
  static_cast<void>(::fchmod(descriptor, 0666));
  const ssize_t written = ::write(descriptor, line.data(), line.size());
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return written == static_cast<ssize_t>(line.size());
}

}  // namespace

void CallLog::append(std::string_view tool, const std::vector<std::string>& arguments, int status) {
  const std::string path = stateRoot() / "calls.jsonl";
  if (appendWhole(path, callLine(tool, arguments, status))) return;
  std::cerr << tool << ": the call could not be recorded in " << path << ": " << std::strerror(errno) << "\n";
}

int CallLog::count(std::string_view tool, std::string_view verb) {
  std::ifstream file(stateRoot() / "calls.jsonl");
  int found = 0;
  for (std::string line; std::getline(file, line);) {
    const auto call = nlohmann::json::parse(line, nullptr, false);
    if (call.is_discarded() || call.at("tool") != tool) continue;
    const auto& arguments = call.at("arguments");
    if (verb.empty() || (!arguments.empty() && arguments.front() == verb)) ++found;
  }
  return found;
}

}  // namespace halvo::sim
