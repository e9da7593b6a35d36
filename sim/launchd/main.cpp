// The first program of the simulated machine.
#include <charconv>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/launchd/Probe.h"
#include "sim/launchd/Session.h"
#include "sim/support/StateRoot.h"

namespace {

using halvo::sim::SessionOrder;

constexpr int kUsage = 64;

int usage() {
  std::cerr << "Usage: launchd --session [--root DIR] [--user UID] -- COMMAND [ARGUMENT...]\n"
               "       launchd --probe\n";
  return kUsage;
}

std::optional<uid_t> number(std::string_view text) {
  uid_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<SessionOrder> parse(const std::vector<std::string>& arguments) {
  SessionOrder order;
  std::size_t i = 1;
  for (; i + 1 < arguments.size() && arguments[i] != "--"; i += 2) {
    const auto uid = number(arguments[i + 1]);
    if (arguments[i] == "--root") {
      order.root = arguments[i + 1];
    } else if (arguments[i] == "--user" && uid) {
      order.user = *uid;
    } else {
      return std::nullopt;
    }
  }
  if (i + 1 >= arguments.size() || arguments[i] != "--") return std::nullopt;
  order.command.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
  return order;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments == std::vector<std::string>{"--probe"}) return halvo::sim::probeMachine();
  if (arguments.empty() || arguments.front() != "--session") return usage();
  const auto order = parse(arguments);
  if (!order) return usage();
  halvo::sim::setStateRoot(order->root / "sim");
  return halvo::sim::runSession(*order);
}
