// Runs requests in every order that a scheduler could choose.
//
// A schedule is the list of who has the turn from one boundary to the next; between two boundaries a request works on
// its own data only. The search goes depth first: an execution follows a prefix of choices and then always the first
// one; the next execution changes the last choice that has an alternative left.
//
// What was explored is not explored again: two executions that led every request to the same place and the machine to
// the same state have the same futures. A request computes nothing but what it is told, so its place is the list of
// what it was told, kept exactly; the state of the machine is compared as a whole. No two states are taken for one
// another by a hash. Without a bound, the search therefore covers all schedules there are. With one, those with at most
// so many preemptions: turns taken from a request that could have gone on.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/interleaving/Turns.h"

namespace halvo::interleaving {

// A fresh machine with the requests that are made on it.
class Scene {
 public:
  Scene() = default;
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;
  virtual ~Scene() = default;

  [[nodiscard]] virtual std::vector<std::function<void()>> requests() = 0;
  // Everything on which the future depends but the places of the requests.
  [[nodiscard]] virtual std::string state() const = 0;
  // What went wrong; nothing as long as nothing has.
  [[nodiscard]] virtual std::optional<std::string> violation() const = 0;
  // Whether the process has ended, and with it every request.
  [[nodiscard]] virtual bool ended() const { return false; }
  // What happened so far, a line for each turn.
  [[nodiscard]] virtual std::vector<std::string> story() const = 0;
};

struct Exploration {
  std::optional<std::string> violation;  // with it the search ends
  std::vector<std::string> story;        // of the execution that led there
  std::size_t states = 0;                // different ones
  std::size_t executions = 0;
  double schedules = 0;  // how many ways through these states there are
};

class Explorer {
 public:
  using SceneMaker = std::function<std::unique_ptr<Scene>()>;

  // Without `preemptions` every schedule is covered. `makeScene` must make the same one each time.
  explicit Explorer(SceneMaker makeScene, std::optional<int> preemptions = std::nullopt);

  // A deadlock ends the program: nobody could take the threads back.
  [[nodiscard]] Exploration run();

  // The explored schedule with the fewest preemptions that goes wrong, looked for up to a bound.
  [[nodiscard]] static Exploration findSimplest(const SceneMaker& makeScene, int mostPreemptions);

 private:
  // Requests by number, then the machine, then what a bounded search depends on.
  using State = std::vector<int>;
  struct Decision {
    State state;
    std::vector<std::size_t> choices;
    std::size_t taken = 0;
    double schedules = 0;
  };

  void execute();
  [[nodiscard]] std::optional<std::size_t> choose();
  [[nodiscard]] std::optional<std::size_t> decide();
  [[nodiscard]] std::vector<std::size_t> choices() const;
  [[nodiscard]] State stateNow();
  void endPath(double schedules);
  [[nodiscard]] std::size_t follow(std::size_t depth);
  [[nodiscard]] bool backtrack();

  SceneMaker makeScene_;
  std::optional<int> preemptions_;
  Histories histories_;
  std::map<std::string, int> machines_;
  std::map<State, double> known_;  // the schedules from there on
  std::vector<Decision> path_;
  Exploration result_;

  // Of the execution that runs.
  std::unique_ptr<Scene> scene_;
  std::unique_ptr<Turns> turns_;
  std::size_t count_ = 0;
  std::size_t depth_ = 0;
  std::optional<std::size_t> last_;
  int left_ = 0;
};

}  // namespace halvo::interleaving
