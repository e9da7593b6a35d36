#include "sim/support/StateRoot.h"

#include <utility>

namespace halvo::sim {
namespace {

std::filesystem::path& current() {
  static std::filesystem::path root("/sim");
  return root;
}

}  // namespace

std::filesystem::path stateRoot() { return current(); }

void setStateRoot(std::filesystem::path root) { current() = std::move(root); }

}  // namespace halvo::sim
