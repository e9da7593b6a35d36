#include "client/LocalView.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "HalvoHelper/system/ProductPaths.h"

namespace halvo {
namespace {

constexpr const char* kWrittenTo = "/var/db";

}  // namespace

bool LocalView::productIsInstalled() const {
  return !std::ranges::all_of(kInstalledParts, [this](const char* part) {
    std::error_code error;
    return std::filesystem::symlink_status(root_ + part, error).type() == std::filesystem::file_type::not_found;
  });
}

bool LocalView::stagingIsLeft() const {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(root_ + kInstallStagingRoot, error));
}

bool LocalView::diskIsFull() const {
  constexpr std::uintmax_t kLittle = std::uintmax_t{1024} * 1024;
  std::error_code error;
  const auto space = std::filesystem::space(root_ + kWrittenTo, error);
  return !error && space.available < kLittle;
}

}  // namespace halvo
