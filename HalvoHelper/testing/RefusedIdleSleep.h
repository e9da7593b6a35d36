// A system on which nothing keeps the Mac awake.
#pragma once

#include "HalvoHelper/system/IdleSleep.h"

namespace halvo {

class RefusedIdleSleep final : public IdleSleep {
 public:
  std::optional<Hold> prevent() const override { return std::nullopt; }
  void allow(Hold) const override {}
};

}  // namespace halvo
