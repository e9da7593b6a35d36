#include "sim/launchd/Launchd.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <memory>
#include <system_error>
#include <utility>
#include <variant>

#include "sim/launchd/JobDescription.h"
#include "sim/launchd/JobTable.h"

namespace halvo::sim {
namespace {

const ControlReply kDone{};
const ControlReply kNotPermitted{1, "Operation not permitted"};
const ControlReply kNoSuchProcess{3, "No such process"};
const ControlReply kInProgress{36, "Operation now in progress"};
const ControlReply kInvalidArgument{22, "Invalid argument"};
const ControlReply kNoSuchDomain{112, "Could not find specified domain"};
const ControlReply kNoSuchService{113, "Could not find specified service"};

ControlReply inputOutputError(const std::string& detail) { return {5, "Input/output error\n" + detail}; }

std::string firstWordOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string word;
  file >> word;
  return word;
}

std::vector<std::filesystem::path> propertyLists(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".plist") found.push_back(entry.path());
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace

Launchd::Launchd(LaunchdPaths paths)
    : paths_(std::move(paths)),
      registrations_(paths_.state / "registered-services"),
      unapproved_(paths_.state / "unapproved-services") {}

void Launchd::boot() {
  loadFolder("system", paths_.systemDaemons);
  loadFolder("system", paths_.daemons);
  for (const auto& plist : registrations_.all()) load("system", plist);
  for (const uid_t user : guiSessions(paths_.state / "gui-sessions")) loadFolder(guiDomain(user), paths_.agents);
}

void Launchd::handle(const ControlRequest& request, bool mayChange, const Answer& whenDone) {
  const auto& [verb, arguments] = request;
  // Whoever has an answer finds its effect: the process started, the job table written.
  const Answer answer = [this, whenDone](const ControlReply& reply) {
    work(Job::Clock::now());
    whenDone(reply);
  };
  const auto is = [&](const char* name, std::size_t count) { return verb == name && arguments.size() == count; };
  if (is("print", 1)) return answer(print(arguments[0]));
  // An application registers its own daemons without being root: it is the approval that takes an administrator.
  if (is("submit", 1)) return answer(submitService(arguments[0]));
  if (is("unregister", 1)) return answer(unregisterService(arguments[0]));
  if (is("registration", 1)) return answer({0, registrationOf(arguments[0])});
  if (!mayChange) return answer(kNotPermitted);
  if (is("bootstrap", 2)) return answer(bootstrap(arguments[0], arguments[1]));
  if (is("bootout", 1)) return bootout(arguments[0], answer);
  if (is("killall", 1)) return answer(killall(arguments[0]));
  if (is("register", 1)) return answer(registerService(arguments[0]));
  answer(kInvalidArgument);
}

void Launchd::work(TimePoint now) {
  for (const auto& job : jobs_.all()) {
    job->killIfOverdue(now);
    changed_ = job->startIfDue(now, paths_) || changed_;
  }
  if (changed_ && !jobs_.publish(paths_.state / "jobs.json")) note("The job table cannot be written.");
  changed_ = false;
}

std::vector<int> Launchd::awaited(TimePoint now) const {
  std::vector<int> descriptors;
  for (const auto& job : jobs_.all()) {
    const auto sockets = job->awaited(now);
    descriptors.insert(descriptors.end(), sockets.begin(), sockets.end());
  }
  return descriptors;
}

std::optional<Launchd::TimePoint> Launchd::deadline(TimePoint now) const {
  std::optional<TimePoint> first;
  for (const auto& job : jobs_.all()) {
    const auto due = job->deadline(now);
    if (due && (!first || *due < *first)) first = due;
  }
  return first;
}

void Launchd::processEnded(pid_t process, int waitStatus) {
  Job* job = jobs_.findProcess(process);
  if (job == nullptr) return;
  job->processEnded(waitStatus);
  changed_ = true;
  if (job->leaving()) jobs_.remove(*job);
}

bool Launchd::serves() const {
  return std::ranges::any_of(jobs_.all(), [](const auto& job) { return job->serves(); });
}

void Launchd::shutDown() {
  std::vector<Job*> jobs;
  for (const auto& job : jobs_.all()) jobs.push_back(job.get());
  for (Job* job : jobs) unload(*job, nullptr);
}

ControlReply Launchd::bootstrap(const std::string& domain, const std::string& plist) {
  const auto target = parseJobTarget(domain);
  if (!target || !target->label.empty() || !exists(target->domain)) return kNoSuchDomain;
  return load(target->domain, plist);
}

void Launchd::bootout(const std::string& text, const Answer& answer) {
  const auto target = parseJobTarget(text);
  if (!target || !exists(target->domain)) return answer(kNoSuchDomain);
  Job* job = jobs_.find(target->domain, target->label);
  if (job == nullptr) return answer(kNoSuchProcess);
  if (job->ending()) return answer(kInProgress);
  unload(*job, [answer] { answer(kDone); });
}

ControlReply Launchd::print(const std::string& text) const {
  const auto target = parseJobTarget(text);
  if (!target || !exists(target->domain)) return kNoSuchDomain;
  if (target->label.empty()) return {0, describeDomain(target->domain, jobs_)};
  const Job* job = jobs_.find(target->domain, target->label);
  if (job == nullptr) return kNoSuchService;
  return {0, describeJob(*job)};
}

ControlReply Launchd::killall(const std::string& name) const {
  ControlReply reply{1, "No matching processes belonging to you were found"};
  for (const auto& job : jobs_.all()) {
    if (!job->process() || job->description().program.filename() != name) continue;
    job->signal(SIGTERM);
    reply = kDone;
  }
  return reply;
}

ControlReply Launchd::registerService(const std::string& plist) {
  const Job* loaded = jobs_.findPlist(plist);
  if (loaded == nullptr || loaded->leaving()) {
    ControlReply reply = load("system", plist);
    if (reply.status != 0) return reply;
  }
  if (!unapproved_.remove(plist)) return inputOutputError("The registration cannot be approved.");
  return registrations_.add(plist) ? kDone : inputOutputError("The registration cannot be written.");
}

ControlReply Launchd::submitService(const std::string& plist) {
  if (registrations_.holds(plist)) return {12, "SMAppServiceErrorDomain error 12: already registered"};
  // Otherwise it is a Mac on which an administrator agreed before, or whose management did.
  if (firstWordOf(paths_.state / "background-approval") != "ask") return registerService(plist);
  if (!unapproved_.add(plist)) return inputOutputError("The registration cannot be written.");
  return {1, "SMAppServiceErrorDomain error 1: Operation not permitted"};
}

std::string Launchd::registrationOf(const std::string& plist) const {
  if (registrations_.holds(plist)) return "enabled";
  return unapproved_.holds(plist) ? "requires-approval" : "not-registered";
}

ControlReply Launchd::unregisterService(const std::string& plistName) {
  const auto cannotBeWithdrawn = inputOutputError("The registration cannot be withdrawn.");
  if (const auto waiting = unapproved_.named(plistName))
    return unapproved_.remove(*waiting) ? kDone : cannotBeWithdrawn;
  const auto plist = registrations_.named(plistName);
  if (!plist) return {6, "SMAppServiceErrorDomain error 6: job not found"};
  if (!registrations_.remove(*plist)) return cannotBeWithdrawn;
  Job* job = jobs_.findPlist(*plist);
  if (job == nullptr) return kDone;
  // As a Mac may, before the caller has seen the answer.
  if (firstWordOf(paths_.state / "unregister") == "kill") {
    unload(*job, nullptr);
    return kDone;
  }
  job->withdraw();
  if (!job->process()) jobs_.remove(*job);
  changed_ = true;
  return kDone;
}

ControlReply Launchd::load(const std::string& domain, const std::filesystem::path& plist) {
  const auto refuse = [this](const std::string& reason) {
    note(reason);
    return inputOutputError(reason);
  };
  const auto read = readJobDescription(plist);
  if (const auto* unusable = std::get_if<UnusableJob>(&read)) return refuse(unusable->reason);
  const auto& description = std::get<JobDescription>(read);
  if (const auto problem = domain == "system" ? unsafeDaemon(description) : std::nullopt) return refuse(*problem);
  if (const Job* known = jobs_.find(domain, description.label)) {
    if (known->leaving()) return kInProgress;
    return inputOutputError(domain + "/" + description.label + " is loaded already.");
  }
  for (const std::string& service : description.machServices) {
    if (jobs_.publishes(service)) return inputOutputError("Another job publishes the service " + service + ".");
  }
  auto job = std::make_unique<Job>(domain, description);
  if (const auto problem = job->publish(paths_.machServices)) return refuse(*problem);
  jobs_.add(std::move(job));
  changed_ = true;
  return kDone;
}

void Launchd::loadFolder(const std::string& domain, const std::filesystem::path& folder) {
  for (const auto& plist : propertyLists(folder)) load(domain, plist);
}

void Launchd::unload(Job& job, Job::WhenGone whenGone) {
  job.terminate(Job::Clock::now(), std::move(whenGone));
  if (!job.process()) jobs_.remove(job);
  changed_ = true;
}

bool Launchd::exists(const std::string& domain) const { return domainExists(domain, paths_.state / "gui-sessions"); }

void Launchd::note(const std::string& line) const {
  std::ofstream(paths_.state / "launchd.log", std::ios::app) << line << '\n';
}

}  // namespace halvo::sim
