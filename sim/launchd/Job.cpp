#include "sim/launchd/Job.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <set>
#include <system_error>
#include <utility>
#include <variant>

#include "sim/launchd/Domain.h"
#include "sim/launchd/PrivacyProtection.h"
#include "sim/launchd/ProcessStart.h"
#include "sim/support/SimClock.h"

namespace halvo::sim {
namespace {

// A program that cannot be started at all is tried again at this pace at most.
constexpr std::chrono::seconds kRetryInterval(1);
// Keeps a moment in the future representable however slow the machine's clock is.
constexpr std::chrono::hours kLongestInterval(24);
constexpr int kConfigurationError = 78;

bool readable(int descriptor) {
  pollfd entry{.fd = descriptor, .events = POLLIN, .revents = 0};
  return ::poll(&entry, 1, 0) > 0;
}

}  // namespace

Job::Job(std::string domain, JobDescription description)
    : domain_(std::move(domain)), description_(std::move(description)) {}

std::optional<std::string> Job::publish(const std::filesystem::path& machServices) {
  for (const std::string& service : description_.machServices) {
    auto socket = ListeningSocket::open(machServices / service);
    if (!socket) {
      const int error = errno;
      sockets_.clear();
      return "The service " + service + " cannot be published: " + std::generic_category().message(error) + ".";
    }
    sockets_.push_back(std::move(*socket));
  }
  return std::nullopt;
}

void Job::withdraw() {
  withdrawn_ = true;
  sockets_.clear();
}

bool Job::wantsProcess() const { return description_.keepAlive || (description_.runAtLoad && !loadStartDone_); }

bool Job::startIfDue(Clock::time_point now, const LaunchdPaths& paths) {
  if (process_ || leaving() || now < notBefore_) return false;
  if (!wantsProcess() && !std::ranges::any_of(awaited(now), readable)) return false;
  start(now, paths);
  return true;
}

void Job::start(Clock::time_point now, const LaunchdPaths& paths) {
  JobProcessOrder order{.label = description_.label,
                        .program = description_.program,
                        .arguments = description_.arguments,
                        .listening = {},
                        .listeningNames = description_.machServices,
                        .user = domainUser(domain_),
                        .output = paths.state / "job-output" / (description_.label + ".log"),
                        .closedFolders = {}};
  if (domain_ == "system") order.closedFolders = foldersKeptFrom(description_.program, paths);
  for (const ListeningSocket& socket : sockets_) order.listening.push_back(socket.descriptor());

  loadStartDone_ = true;
  notBefore_ = now + std::min<Clock::duration>(realDuration(description_.throttleInterval), kLongestInterval);
  const auto started = startJobProcess(order);
  if (const auto* child = std::get_if<pid_t>(&started)) {
    process_ = *child;
    ++starts_;
  } else {
    lastWaitStatus_ = W_EXITCODE(kConfigurationError, 0);
    notBefore_ = std::max(notBefore_, now + kRetryInterval);
  }
}

std::optional<Job::Clock::time_point> Job::deadline(Clock::time_point now) const {
  if (process_ && ending_) return killAt_;
  if (process_ || leaving()) return std::nullopt;
  if (wantsProcess()) return notBefore_;
  // A job that waits for clients needs waking once, to be listened for again after a start that was too recent.
  if (!sockets_.empty() && now < notBefore_) return notBefore_;
  return std::nullopt;
}

std::vector<int> Job::awaited(Clock::time_point now) const {
  std::vector<int> descriptors;
  if (process_ || leaving() || now < notBefore_) return descriptors;
  for (const ListeningSocket& socket : sockets_) descriptors.push_back(socket.descriptor());
  return descriptors;
}

void Job::processEnded(int waitStatus) {
  process_.reset();
  lastWaitStatus_ = waitStatus;
}

void Job::terminate(Clock::time_point now, WhenGone whenGone) {
  if (ending_) return;
  withdraw();
  ending_ = true;
  whenGone_ = std::move(whenGone);
  if (description_.exitTimeOut > std::chrono::seconds::zero()) killAt_ = now + description_.exitTimeOut;
  signal(SIGTERM);
}

void Job::killIfOverdue(Clock::time_point now) const {
  if (process_ && killAt_ && now >= *killAt_) ::kill(-*process_, SIGKILL);
}

void Job::signal(int number) const {
  if (process_) ::kill(*process_, number);
}

bool Job::serves() const {
  if (!process_ || leaving()) return false;
  std::set<std::string> listening;
  for (const ListeningSocket& socket : sockets_) {
    struct stat info {};
    if (::fstat(socket.descriptor(), &info) == 0) listening.insert("socket:[" + std::to_string(info.st_ino) + "]");
  }
  std::error_code error;
  const auto folder = std::filesystem::directory_iterator("/proc/" + std::to_string(*process_) + "/fd", error);
  return std::any_of(begin(folder), end(folder), [&](const auto& entry) {
    const std::string name = std::filesystem::read_symlink(entry.path(), error).string();
    return name.starts_with("socket:[") && !listening.contains(name);
  });
}

JobState Job::state() const {
  return {.domain = domain_,
          .label = description_.label,
          .program = description_.program.string(),
          .pid = process_,
          .starts = starts_,
          .lastExitStatus = lastWaitStatus_ ? std::optional(exitStatusOf(*lastWaitStatus_)) : std::nullopt};
}

}  // namespace halvo::sim
