#include "tests/interleaving/Explorer.h"

#include <cstdlib>
#include <iostream>

namespace halvo::interleaving {

Explorer::Explorer(SceneMaker makeScene, std::optional<int> preemptions)
    : makeScene_(std::move(makeScene)), preemptions_(preemptions) {}

Exploration Explorer::run() {
  do {
    execute();
  } while (!result_.violation && backtrack());
  result_.states = known_.size();
  return result_;
}

Exploration Explorer::findSimplest(const SceneMaker& makeScene, int mostPreemptions) {
  Exploration found;
  for (int bound = 0; bound <= mostPreemptions && !found.violation; ++bound) {
    found = Explorer(makeScene, bound).run();
  }
  return found;
}

void Explorer::execute() {
  scene_ = makeScene_();
  auto requests = scene_->requests();
  count_ = requests.size();
  depth_ = 0;
  last_.reset();
  left_ = preemptions_.value_or(0);
  ++result_.executions;
  turns_ = std::make_unique<Turns>(
      std::move(requests), [this] { return choose(); }, histories_);
  turns_->run();
}

std::optional<std::size_t> Explorer::choose() {
  if ((result_.violation = scene_->violation())) {
    result_.story = scene_->story();
    return std::nullopt;
  }
  return depth_ < path_.size() ? follow(depth_) : decide();
}

std::optional<std::size_t> Explorer::decide() {
  if (turns_->allDone() || scene_->ended()) {
    endPath(1);
    return std::nullopt;
  }
  auto possible = choices();
  if (possible.empty()) {
    std::cerr << "deadlock: every request waits for a mutex\n";
    std::abort();
  }
  State state = stateNow();
  const auto known = known_.find(state);
  if (known != known_.end()) {
    endPath(known->second);
    return std::nullopt;
  }
  path_.push_back({.state = std::move(state), .choices = std::move(possible)});
  return follow(depth_);
}

std::size_t Explorer::follow(std::size_t depth) {
  const Decision& decision = path_.at(depth);
  const std::size_t chosen = decision.choices.at(decision.taken);
  if (last_ && *last_ != chosen && turns_->ready(*last_)) --left_;
  last_ = chosen;
  ++depth_;
  return chosen;
}

// Whoever had the last turn comes first, so that the first schedule found is one with long turns.
std::vector<std::size_t> Explorer::choices() const {
  std::vector<std::size_t> possible;
  const bool lastGoesOn = last_ && turns_->ready(*last_);
  if (lastGoesOn) possible.push_back(*last_);
  if (lastGoesOn && preemptions_ && left_ == 0) return possible;
  for (std::size_t request = 0; request < count_; ++request) {
    if (turns_->ready(request) && request != last_) possible.push_back(request);
  }
  return possible;
}

Explorer::State Explorer::stateNow() {
  State state;
  for (std::size_t request = 0; request < count_; ++request) {
    state.push_back(turns_->done(request) ? -1 : turns_->history(request));
  }
  const int fresh = static_cast<int>(machines_.size());
  state.push_back(machines_.emplace(scene_->state(), fresh).first->second);
  if (preemptions_) {
    state.push_back(last_ ? static_cast<int>(*last_) : -1);
    state.push_back(left_);
  }
  return state;
}

void Explorer::endPath(double schedules) { (path_.empty() ? result_.schedules : path_.back().schedules) += schedules; }

bool Explorer::backtrack() {
  while (!path_.empty()) {
    Decision& last = path_.back();
    if (++last.taken < last.choices.size()) return true;
    const double schedules = last.schedules;
    known_.emplace(std::move(last.state), schedules);
    path_.pop_back();
    endPath(schedules);
  }
  return false;
}

}  // namespace halvo::interleaving
