#include "sim/support/SimClock.h"

#include <array>
#include <cmath>
#include <ctime>
#include <fstream>

#include "sim/support/MachinePaths.h"

namespace halvo::sim {
namespace {

double readClockRate() {
  std::ifstream file(stateRoot() / "clock-rate");
  double rate = 0;
  return file >> rate && std::isfinite(rate) && rate > 0 ? rate : 1;
}

}  // namespace

double clockRate() {
  static const double rate = readClockRate();
  return rate;
}

double uptimeSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count() * clockRate();
}

std::int64_t uptimeMicroseconds() {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::chrono::nanoseconds realDuration(std::chrono::nanoseconds simulated) {
  // A wait that does not fit stays the longest there is instead of turning negative.
  constexpr auto kLongest = std::chrono::nanoseconds::max();
  const double real = std::ceil(static_cast<double>(simulated.count()) / clockRate());
  if (real >= static_cast<double>(kLongest.count())) return kLongest;
  return std::chrono::nanoseconds(static_cast<std::chrono::nanoseconds::rep>(real));
}

std::string universalTime(const char* format) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  ::gmtime_r(&now, &parts);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

}  // namespace halvo::sim
