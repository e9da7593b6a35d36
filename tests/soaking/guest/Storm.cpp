// Clients that arrive around the moment of the helper's idle exit.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "HalvoHelperXPC/Constants.h"
#include "tests/soaking/guest/Verbs.h"
#include "tests/soaking/guest/Words.h"

namespace halvo::soak {
namespace {

using std::chrono::duration;
using std::chrono::duration_cast;

constexpr std::size_t kThreads = 8;
// Every so often the request is one that runs tools.
constexpr int kUsersEvery = 25;

struct Tally {
  std::atomic<int> requests = 0;
  std::atomic<int> connections = 0;
  std::atomic<std::int64_t> slowest = 0;
  std::mutex mutex;
  std::vector<std::string> lost;  // guarded by the mutex
};

void raise(std::atomic<std::int64_t>& highest, std::int64_t value) {
  std::int64_t before = highest;
  while (before < value && !highest.compare_exchange_weak(before, value)) {
  }
}

void request(Tally& tally) {
  const auto begin = Clock::now();
  const bool users = ++tally.requests % kUsersEvery == 0;
  Conversation conversation([&] {
    ++tally.connections;
    return ServiceClient::forMachService(std::string(kHalvoHelperMachService));
  });
  const Outcome outcome = conversation.askRepeatably([users](auto& helper, const TextReply& text, const BoolReply&) {
    users ? helper.enumerateActiveGuiDomains(text) : helper.ping(text);
  });
  raise(tally.slowest, millisecondsSince(begin));
  const auto* reply = std::get_if<std::string>(&outcome);
  if (reply != nullptr && reply->starts_with(users ? "{\"uids\":[" : "{\"ok\":true,")) return;
  const std::lock_guard lock(tally.mutex);
  tally.lost.push_back((users ? "users: " : "ping: ") + describe(outcome));
}

void burst(Tally& tally, int size) {
  std::vector<std::thread> threads;
  std::atomic<int> left = size;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      while (--left >= 0) request(tally);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The helper that runs, by its name; 0 when none does.
int helperProcess() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(entry.path() / "comm");
    std::string name;
    if (std::getline(file, name) && name == "halvo-helper") return std::stoi(entry.path().filename());
  }
  return 0;
}

void waitForExit() {
  const std::string process = "/proc/" + std::to_string(helperProcess());
  while (isThere(process)) std::this_thread::sleep_for(std::chrono::microseconds(200));
}

// How long after the answer to its first request a helper that is asked nothing else exits.
Clock::duration lifeAfterAnswer(Tally& tally) {
  request(tally);
  const auto answered = Clock::now();
  waitForExit();
  return Clock::now() - answered;
}

// Every burst begins within these seconds before the exit that is expected: the time that it takes to admit a client.
constexpr double kEarliest = 0.008;

void playRounds(Tally& tally, int rounds, int size, std::mt19937& random) {
  std::uniform_real_distribution<double> early(0, kEarliest);
  Clock::duration life = lifeAfterAnswer(tally);
  for (int round = 0; round < rounds; ++round) {
    request(tally);
    const auto exit = Clock::now() + life;
    std::this_thread::sleep_until(exit - duration_cast<Clock::duration>(duration<double>(early(random))));
    burst(tally, size);
    waitForExit();
    // The exit moves with the load of the machine.
    life = (life * 3 + lifeAfterAnswer(tally)) / 4;
  }
}

}  // namespace

int storm(const Arguments& arguments) {
  Tally tally;
  std::mt19937 random(static_cast<unsigned>(std::stoul(arguments.at(2))));
  playRounds(tally, std::stoi(arguments.at(0)), std::stoi(arguments.at(1)), random);
  std::cout << tally.requests << ' ' << tally.connections - tally.requests << ' ' << tally.slowest << '\n';
  for (const std::string& line : tally.lost) std::cerr << line << '\n';
  return tally.lost.empty() ? 0 : 1;
}

int pinger(const Arguments& arguments) {
  int pings = 0;
  std::int64_t slowest = 0;
  while (!isThere(arguments.at(0))) {
    const auto begin = Clock::now();
    Conversation conversation = converse();
    std::string why;
    ++pings;
    if (!answersPing(conversation, why)) {
      std::cerr << "ping " << pings << " of the good client: " << why << '\n';
      return 1;
    }
    slowest = std::max(slowest, millisecondsSince(begin));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  std::cout << pings << ' ' << slowest << '\n';
  return 0;
}

}  // namespace halvo::soak
