#include "client/LocalView.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace halvo {
namespace {

// The parts that a package brings.
constexpr std::array<const char*, 4> kParts = {
    "/Library/Audio/Plug-Ins/HAL/Halvo.driver", "/Library/PrivilegedHelperTools/halvo-broker",
    "/Library/LaunchDaemons/com.halvo.broker.plist", "/Library/LaunchAgents/com.halvo.daemon.plist"};
constexpr const char* kStaging = "/var/db/halvo/install-staging";
constexpr const char* kWrittenTo = "/var/db";

}  // namespace

bool LocalView::productIsInstalled() const {
  return !std::ranges::all_of(kParts, [this](const char* part) {
    std::error_code error;
    return std::filesystem::symlink_status(root_ + part, error).type() == std::filesystem::file_type::not_found;
  });
}

bool LocalView::stagingIsLeft() const {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(root_ + kStaging, error));
}

bool LocalView::diskIsFull() const {
  constexpr std::uintmax_t kLittle = std::uintmax_t{1024} * 1024;
  std::error_code error;
  const auto space = std::filesystem::space(root_ + kWrittenTo, error);
  return !error && space.available < kLittle;
}

}  // namespace halvo
