// Keeps the Mac awake while something must not be cut in two.
#pragma once

#include <cstdint>
#include <optional>

namespace halvo {

// Any thread. Several holds may exist at once.
class IdleSleep {
 public:
  using Hold = std::uint32_t;

  virtual ~IdleSleep() = default;

  // From here on the Mac does not fall asleep because nobody uses it; lid, menu and battery still send it to sleep.
  // Nothing when the system refuses.
  virtual std::optional<Hold> prevent() const = 0;

  // Ends a hold. One that is left ends with the process.
  virtual void allow(Hold hold) const = 0;
};

// Prevents idle sleep as long as it lives, or does nothing where the system refuses.
class IdleSleepPrevention {
 public:
  explicit IdleSleepPrevention(const IdleSleep& sleep) : sleep_(sleep), hold_(sleep.prevent()) {}
  IdleSleepPrevention(const IdleSleepPrevention&) = delete;
  IdleSleepPrevention& operator=(const IdleSleepPrevention&) = delete;
  ~IdleSleepPrevention() {
    if (hold_) sleep_.allow(*hold_);
  }

 private:
  const IdleSleep& sleep_;
  const std::optional<IdleSleep::Hold> hold_;
};

}  // namespace halvo
