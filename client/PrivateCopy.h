// A copy of a package for a helper that has no leave to read the package where it lies.
#pragma once

#include <memory>
#include <string>
#include <variant>

namespace halvo {

// Why there is no copy, as a sentence that also says what to do.
struct NoPrivateCopy {
  std::string reason;
  bool operator==(const NoPrivateCopy&) const = default;
};

// Lies alone in a folder of its own that only the user may enter, under the package's own name. Both go with this
// object, and when a signal that endWithStatusOnInterrupt() knows ends the process. One at a time.
class PrivateCopy {
 public:
  // Makes the folder in `temporaryFolder`. Refuses a link in the package's place, what is no regular file, and what is
  // larger than any package of the maker (256 MiB). Nothing is left behind where it fails.
  static std::variant<std::unique_ptr<const PrivateCopy>, NoPrivateCopy> of(const std::string& package,
                                                                            const std::string& temporaryFolder);

  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;
  ~PrivateCopy();

  [[nodiscard]] const std::string& path() const { return file_; }

 private:
  PrivateCopy(const std::string& package, const std::string& temporaryFolder);

  [[nodiscard]] bool fillFrom(const std::string& package);

  std::string folder_;
  std::string file_;
  int error_ = 0;
};

// The user's own, which nobody else but root enters (_CS_DARWIN_USER_TEMP_DIR); /tmp where the system names none.
[[nodiscard]] std::string userTemporaryFolder();

}  // namespace halvo
