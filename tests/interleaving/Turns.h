// Requests on threads of their own, of which one has the turn at any time. It gives the turn away only at a boundary:
// before a call of a collaborator, before it takes a mutex, and when it is done.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <utility>
#include <vector>

namespace halvo::interleaving {

// Gives every sequence of events a number, the same one whenever the same events come in the same order.
class Histories {
 public:
  // The number of history `begin` with one more event. The empty history is number 0.
  int after(int begin, const std::string& event);

 private:
  std::map<std::pair<int, std::string>, int> numbers_;
};

class Turns {
 public:
  // Which request has the next turn; nothing ends the execution. Called by whoever had the last one.
  using Choice = std::function<std::optional<std::size_t>()>;

  Turns(std::vector<std::function<void()>> requests, Choice choose, Histories& histories);
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;
  ~Turns() = default;

  // Runs all requests to their end. Once the execution was ended, nothing is a boundary any more, and collaborators
  // neither act nor answer. Call once.
  void run();

  // Whether the request can go on: it is not done, and the mutex that it waits for is free.
  [[nodiscard]] bool ready(std::size_t request) const;
  [[nodiscard]] bool done(std::size_t request) const { return requests_.at(request)->done; }
  [[nodiscard]] bool allDone() const;
  // What the request was told so far, as the number of a history: as it computes, it is where its thread is.
  [[nodiscard]] int history(std::size_t request) const { return requests_.at(request)->history; }

  // The rest is called on the threads of requests, by what they call. The calls of every other thread do nothing.

  // Gives the turn away and returns when it is back. False when the execution was ended.
  static bool boundary();
  // What a call told the request that has the turn.
  static void told(const std::string& event);
  // Which request calls; nothing on a thread of somebody else, or once the execution was ended.
  static std::optional<std::size_t> current();
  // Waits until nobody holds the mutex, and notes who does.
  static void beforeLock(const void* mutex);
  static void afterUnlock(const void* mutex);

 private:
  struct Request {
    std::function<void()> work;
    std::binary_semaphore turn{0};
    int history = 0;
    bool done = false;
    const void* waitsFor = nullptr;
  };

  void runRequest(std::size_t number);
  void passTurn();
  bool waitForTurn(Request& request);

  std::vector<std::unique_ptr<Request>> requests_;
  Choice choose_;
  Histories& histories_;
  std::map<const void*, std::size_t> holders_;
  bool over_ = false;

  static thread_local Turns* turns_;
  static thread_local std::size_t number_;
};

}  // namespace halvo::interleaving
