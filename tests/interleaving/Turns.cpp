#include "tests/interleaving/Turns.h"

#include <algorithm>
#include <thread>

namespace halvo::interleaving {

thread_local Turns* Turns::turns_ = nullptr;
thread_local std::size_t Turns::number_ = 0;

int Histories::after(int begin, const std::string& event) {
  const int fresh = static_cast<int>(numbers_.size()) + 1;
  return numbers_.emplace(std::pair(begin, event), fresh).first->second;
}

Turns::Turns(std::vector<std::function<void()>> requests, Choice choose, Histories& histories)
    : choose_(std::move(choose)), histories_(histories) {
  for (auto& work : requests) {
    requests_.push_back(std::make_unique<Request>());
    requests_.back()->work = std::move(work);
  }
}

void Turns::run() {
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < requests_.size(); ++number) {
    threads.emplace_back([this, number] { runRequest(number); });
  }
  passTurn();
  std::ranges::for_each(threads, &std::thread::join);
}

void Turns::runRequest(std::size_t number) {
  Request& request = *requests_.at(number);
  request.turn.acquire();
  turns_ = this;
  number_ = number;
  told("begins");
  request.work();
  turns_ = nullptr;
  if (over_) return;
  request.done = true;
  passTurn();
}

// Whoever calls has the turn: nobody else looks at anything here meanwhile.
void Turns::passTurn() {
  const auto chosen = choose_();
  if (chosen) return requests_.at(*chosen)->turn.release();
  over_ = true;
  for (const auto& request : requests_) {
    if (!request->done) request->turn.release();
  }
}

bool Turns::waitForTurn(Request& request) {
  passTurn();
  request.turn.acquire();
  told("goes on");
  return !over_;
}

bool Turns::ready(std::size_t request) const {
  const Request& asked = *requests_.at(request);
  return !asked.done && (asked.waitsFor == nullptr || !holders_.contains(asked.waitsFor));
}

bool Turns::allDone() const {
  return std::ranges::all_of(requests_, [](const auto& request) { return request->done; });
}

std::optional<std::size_t> Turns::current() {
  return turns_ == nullptr || turns_->over_ ? std::nullopt : std::optional<std::size_t>(number_);
}

bool Turns::boundary() {
  if (turns_ == nullptr) return true;
  return !turns_->over_ && turns_->waitForTurn(*turns_->requests_.at(number_));
}

void Turns::told(const std::string& event) {
  if (turns_ == nullptr || turns_->over_) return;
  int& history = turns_->requests_.at(number_)->history;
  history = turns_->histories_.after(history, event);
}

void Turns::beforeLock(const void* mutex) {
  if (turns_ == nullptr || turns_->over_) return;
  Request& request = *turns_->requests_.at(number_);
  request.waitsFor = mutex;
  if (!turns_->waitForTurn(request)) return;
  request.waitsFor = nullptr;
  turns_->holders_[mutex] = number_;
}

void Turns::afterUnlock(const void* mutex) {
  if (turns_ == nullptr || turns_->over_) return;
  turns_->holders_.erase(mutex);
}

}  // namespace halvo::interleaving
