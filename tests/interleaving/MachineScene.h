// A scene on the machine; what making a request means is left to those that know at which level it is made.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "HalvoHelper/system/AudioActivity.h"
#include "tests/interleaving/Explorer.h"
#include "tests/interleaving/Machine.h"
#include "tests/interleaving/Requests.h"

namespace halvo::interleaving {

// The wiring resolves this path on the real disk, where a directory stands; what lies in it is in memory.
[[nodiscard]] const std::string& appBundle();

// The package that an install asks for.
[[nodiscard]] const char* packageOf(Request request);

class MachineScene : public Scene {
 public:
  MachineScene(std::vector<Request> requests, const std::set<Rule>& rules);

  std::vector<std::function<void()>> requests() override;
  std::string state() const override { return machine_->state(); }
  std::optional<std::string> violation() const override { return machine_->violation(); }
  bool ended() const override { return machine_->ended(); }
  // Of each turn the first and the last call.
  std::vector<std::string> story() const override;

 protected:
  virtual void make(Request request) = 0;

  [[nodiscard]] const std::shared_ptr<Machine>& machine() const { return machine_; }
  [[nodiscard]] std::shared_ptr<const PrivilegedFS> fs() const { return std::make_shared<WatchedFS>(machine_); }
  [[nodiscard]] std::shared_ptr<const ProcessRunner> tools() const { return std::make_shared<WatchedTools>(machine_); }
  [[nodiscard]] static AudioActivity audio() { return AudioActivity(std::make_shared<const WatchedAudio>()); }

 private:
  std::vector<Request> requests_;
  std::shared_ptr<Machine> machine_;
};

}  // namespace halvo::interleaving
