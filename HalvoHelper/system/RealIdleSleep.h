// Asks the system by power assertions, which `pmset -g assertions` lists.
#pragma once

#include <functional>
#include <string>

#include "HalvoHelper/system/IdleSleep.h"
#include "platform/SystemLog.h"

namespace halvo {

class RealIdleSleep final : public IdleSleep {
 public:
  // `log` is told of every refusal.
  explicit RealIdleSleep(std::function<void(const std::string&)> log = halvoSystemLog);

  std::optional<Hold> prevent() const override;
  void allow(Hold hold) const override;

 private:
  const std::function<void(const std::string&)> log_;
};

}  // namespace halvo
