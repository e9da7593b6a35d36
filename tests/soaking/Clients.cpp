// Hostile clients, admitted and not, while a good one is served.
#include <algorithm>
#include <functional>

#include "tests/soaking/Soak.h"

namespace halvo::soak {
namespace {

constexpr const char* kRefusal = "halvo-helper: rejected unauthorized client pid=";
constexpr const char* kUnauthorized = R"({"code":"unauthorized"})";
constexpr const char* kStagingFailed = R"({"code":"untrusted_package","reason":"staging_failed"})";
constexpr const char* kTemporary = "/private/var/tmp/";

struct Stranger {
  const char* name;
  const char* identifier;
  const char* team;
};

// The last ones spell requirements, in case anybody pastes a name into one.
const Stranger kStrangers[] = {
    {"unsigned", "halvo-app", ""},
    {"no-team", "com.halvo.app", ""},
    {"other-identifier", "com.halvo.application", "QX4TRM2ZL9"},
    {"identifier-in-capitals", "COM.HALVO.APP", "QX4TRM2ZL9"},
    {"other-team", "com.halvo.app", "QX4TRM2ZL8"},
    {"longer-team", "com.halvo.app", "QX4TRM2ZL9X"},
    {"the-helper", "com.halvo.helper", "QX4TRM2ZL9"},
    {"requirement-as-identifier", R"(com.halvo.app" or anchor apple generic or identifier "x)", "AB12CD34EF"},
    {"requirement-as-team", "com.halvo.app2", R"(QX4TRM2ZL9" or identifier "com.halvo.app2)"},
};

class Clients {
 public:
  explicit Clients(const Plan& plan) : plan_(plan) {
    soak_.mac().start();
    require(soak_.machine.app({"ping"}).status == 0, "the first ping is not answered");
    for (const Stranger& one : kStrangers) {
      programs_.push_back(soak_.stranger(one.name, one.identifier, one.team));
    }
  }

  void run() {
    startPinger();
    // Once, so that what is allocated for good is there before anything is measured.
    attack(1, plan_.amount(10'000, 2'000));
    stopPinger();
    const ProcessFigures before = atRest();
    startPinger();
    attack(plan_.amount(20, 2), plan_.amount(100'000, 8'000));
    stopPinger();
    compare(before, atRest());
  }

 private:
  void attack(int rounds, int calls) {
    strangersKnock(rounds);
    processesDie(rounds * 20);
    for (int i = 0; i < rounds; ++i) {
      lingerWhile("removed", [](const std::filesystem::path& file) { std::filesystem::remove(file); });
      lingerWhile("replaced", [](const std::filesystem::path& file) {
        std::filesystem::copy_file(file, file.string() + ".new");
        std::filesystem::rename(file.string() + ".new", file);
      });
    }
    recycled_ = 0;
    for (int i = 0; i < rounds; ++i) recycleNumber();
    tell(recycled_ == 0 ? "a recycled process number cannot be had on this machine"
                        : std::to_string(recycled_) + " times the application got a dead stranger's process number");
    useForms();
    soak_.guest({"calls", std::to_string(calls), std::to_string(plan_.seed)});
    tell(std::to_string(calls) + " calls of every method with random values by an admitted client changed nothing");
  }

  void strangersKnock(int rounds) {
    constexpr int kKnocks = 5;
    const int before = soak_.linesWith(kRefusal);
    for (int i = 0; i < rounds; ++i) {
      for (const std::string& program : programs_) knock(program, kKnocks);
    }
    const int knocks = rounds * kKnocks * static_cast<int>(programs_.size());
    // The good client is never among them.
    const int refused = soak_.linesWith(kRefusal) - before;
    require(refused == knocks, std::to_string(knocks) + " strangers, and " + std::to_string(refused) + " refusals");
    tell(std::to_string(knocks) + " connections of " + std::to_string(programs_.size()) + " strangers were refused");
  }

  void knock(const std::string& program, int times) {
    const std::string answered =
        outputOf(soak_.mac().runAsync(soak_.machine.user(), {program, "knock", std::to_string(times)}), program);
    require(answered == "0", program + " was answered " + answered + " of " + std::to_string(times) + " times");
  }

  void processesDie(int times) {
    const int before = soak_.linesWith(kRefusal);
    for (const std::string& program : {programs_.front(), soak_.good()}) {
      outputOf(soak_.mac().runAsync(soak_.machine.user(), {program, "die", std::to_string(times)}), program);
    }
    soak_.reply({"ping"});
    const int refused = soak_.linesWith(kRefusal) - before;
    require(refused >= times, std::to_string(times) + " strangers ended before they were judged, and only " +
                                  std::to_string(refused) + " were refused");
    tell(std::to_string(2 * times) + " clients ended before they were judged; " + std::to_string(refused) +
         " refusals");
  }

  // A program of the application that waits, and connects when `change` has happened to its file.
  void lingerWhile(const std::string& what, const std::function<void(const std::filesystem::path&)>& change) {
    const std::string gate = kTemporary + std::string("gate");
    const std::string program = soak_.stranger(what, "com.halvo.app", "QX4TRM2ZL9");
    auto result = soak_.mac().runAsync(soak_.machine.user(), {program, "linger", gate});
    require(sim::waitUntil([&] { return runs(what); }), what + " does not start");
    change(soak_.mac().path(program));
    soak_.mac().writeFile(gate, "");
    const std::string out = result.get().out;
    require(out.find("no reply") != std::string::npos, "a program that was " + what + " got: " + out);
    std::filesystem::remove(soak_.mac().path(gate));
    std::filesystem::remove(soak_.mac().path(program));
  }

  bool runs(const std::string& name) {
    const auto processes = soak_.census();
    return std::ranges::find(processes, name, &ProcessFigures::name) != processes.end();
  }

  void recycleNumber() {
    const auto helper = soak_.machine.helperProcess();
    require(helper.has_value(), "no helper runs");
    const std::string gate = kTemporary + std::string("recycled");
    auto result = soak_.mac().runAsync(0, {programs_.front(), "recycle", std::to_string(*helper), soak_.good(), gate});
    // It is served only when everybody before it in the queue was judged.
    soak_.reply({"ping"});
    soak_.mac().writeFile(gate, "");
    const std::string number = outputOf(std::move(result), "recycle");
    std::filesystem::remove(soak_.mac().path(gate));
    if (number == "impossible") return;
    ++recycled_;
    require(sim::waitUntil([&] { return soak_.linesWith(kRefusal + number) > 0; }),
            "a dead stranger was taken for the application that has its process number " + number);
  }

  std::string replayed(const std::string& program, unsigned user, const std::string& form) {
    return outputOf(soak_.mac().runAsync(user, {program, "replay", form}), "replay");
  }

  // An approval, while its owner lives and afterwards, in the hands of others.
  void useForms() {
    const std::string stop = kTemporary + std::string("stop");
    auto owner = soak_.guestAsync({"grant", stop});
    const std::string form = formIn(stop);
    require(replayed(soak_.good(), soak_.machine.user(), form) == kStagingFailed, "a good form is refused");
    const std::string stolen = replayed(programs_.front(), soak_.machine.user(), form);
    require(stolen.find("no reply") != std::string::npos, "a stranger with a stolen form got: " + stolen);
    soak_.mac().writeFile(stop, "");
    outputOf(std::move(owner), "grant");
    requireRefused(form, "whose owner has ended");
    forget(stop);
    requireGivenBackRefused();
    requireOfAnotherUserRefused();
    tell("forms that were stolen, replayed, given back, or of a user without approval did nothing");
  }

  void requireRefused(const std::string& form, const std::string& which) {
    const std::string reply = replayed(soak_.good(), soak_.machine.user(), form);
    require(reply == kUnauthorized, "a form " + which + " was answered " + reply);
  }

  void requireGivenBackRefused() {
    const std::string stop = kTemporary + std::string("stop");
    auto owner = soak_.guestAsync({"grant", stop, "destroy"});
    requireRefused(formIn(stop), "that was given back");
    soak_.mac().writeFile(stop, "");
    outputOf(std::move(owner), "grant");
    forget(stop);
  }

  // Nobody approves the other user's request: the form that the user has holds no right.
  void requireOfAnotherUserRefused() {
    if (!soak_.mac().supportsSeveralUsers()) return;
    constexpr unsigned kOther = 502;
    const auto result = soak_.mac().run(kOther, {sim::ProductMachine::kAppProgram, "finalize", "--without-grant"});
    require(result.out == "false\n", "the form of another user was answered " + result.out + result.err);
  }

  std::string formIn(const std::string& stop) {
    require(sim::waitUntil([&] { return soak_.stands(stop + ".form"); }), "no approval was obtained");
    return soak_.mac().readFile(stop + ".form");
  }

  void forget(const std::string& stop) {
    std::filesystem::remove(soak_.mac().path(stop));
    std::filesystem::remove(soak_.mac().path(stop + ".form"));
  }

  void startPinger() { pinger_ = soak_.guestAsync({"pinger", kStopPinger}); }

  void stopPinger() {
    soak_.mac().writeFile(kStopPinger, "");
    const std::string figures = outputOf(std::move(pinger_), "the good client");
    std::filesystem::remove(soak_.mac().path(kStopPinger));
    const std::size_t blank = figures.find(' ');
    const int slowest = std::stoi(figures.substr(blank));
    tell("the good client was answered " + figures.substr(0, blank) + " times; slowest " + std::to_string(slowest) +
         " ms");
    constexpr int kLongest = 10'000;
    require(slowest < kLongest, "the good client waited " + std::to_string(slowest) + " ms");
  }

  // When every connection has ended.
  ProcessFigures atRest() {
    ProcessFigures figures = soak_.figuresOf("halvo-helper");
    sim::waitUntil(
        [&] {
          const ProcessFigures next = soak_.figuresOf("halvo-helper");
          const bool settled = next.threads == figures.threads && next.descriptors == figures.descriptors;
          figures = next;
          return settled;
        },
        std::chrono::seconds(5));
    return figures;
  }

  void compare(const ProcessFigures& before, const ProcessFigures& after) {
    const auto words = [](const ProcessFigures& figures) {
      return std::to_string(figures.descriptors) + " descriptors, " + std::to_string(figures.threads) + " threads, " +
             std::to_string(figures.kilobytes) + " KB";
    };
    const std::string both = "the helper had " + words(before) + " and has " + words(after);
    const auto job = soak_.machine.job("system", "com.halvo.helper");
    require(job && job->starts == 1, "the helper that was attacked was started " + std::to_string(job->starts) +
                                         " times; it ended with " + std::to_string(job->lastExitStatus.value_or(-1)));
    require(before.descriptors == after.descriptors && before.threads == after.threads, both);
    constexpr int kGrowth = 4096;
    require(after.kilobytes <= before.kilobytes + kGrowth, both);
    tell(both);
  }

  static constexpr const char* kStopPinger = "/private/var/tmp/stop-pinger";

  const Plan plan_;
  SoakMachine soak_;
  std::vector<std::string> programs_;
  std::future<sim::CommandResult> pinger_;
  int recycled_ = 0;
};

}  // namespace

void soakClients(const Plan& plan) { Clients(plan).run(); }

}  // namespace halvo::soak
