#include "transport/contract/Answers.h"

#include <chrono>
#include <utility>

namespace halvo {

void Answers::Lines::add(std::string line) {
  const std::lock_guard lock(mutex);
  lines.push_back(std::move(line));
  changed.notify_all();
}

TextReply Answers::text() const {
  return [lines = shared_](const std::string& json) { lines->add("text " + json); };
}

BoolReply Answers::boolean() const {
  return [lines = shared_](bool succeeded) { lines->add(succeeded ? "true" : "false"); };
}

ServiceClient::FailureHandler Answers::failure() const {
  return [lines = shared_](const ServiceFailure& failure) {
    switch (failure.kind) {
      case ServiceFailure::Kind::unreachable:
        return lines->add("unreachable");
      case ServiceFailure::Kind::interrupted:
        return lines->add("interrupted");
      case ServiceFailure::Kind::rejected:
        return lines->add("rejected");
    }
  };
}

std::string Answers::next() {
  std::unique_lock lock(shared_->mutex);
  const bool came =
      shared_->changed.wait_for(lock, std::chrono::seconds(30), [this] { return !shared_->lines.empty(); });
  if (!came) return "nothing came";
  std::string line = std::move(shared_->lines.front());
  shared_->lines.pop_front();
  return line;
}

std::vector<std::string> Answers::rest() {
  const std::lock_guard lock(shared_->mutex);
  std::vector<std::string> lines(shared_->lines.begin(), shared_->lines.end());
  shared_->lines.clear();
  return lines;
}

}  // namespace halvo
