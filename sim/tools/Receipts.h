// The machine's record of installed packages.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace halvo::sim {

struct Receipt {
  std::string identifier;
  std::string version;
  std::string fileName;            // of the package
  std::vector<std::string> paths;  // what it brought
};

class Receipts {
 public:
  // The receipts of the machine whose file system starts at `root`.
  explicit Receipts(const std::filesystem::path& root);

  // Replaces an earlier receipt of the same package. False when it cannot be written.
  bool keep(const Receipt& receipt) const;

  // False when there is no receipt of the package, or it cannot be removed.
  bool forget(const std::string& identifier) const;

  // The identifiers, sorted.
  [[nodiscard]] std::vector<std::string> identifiers() const;

 private:
  std::filesystem::path folder_;
};

}  // namespace halvo::sim
