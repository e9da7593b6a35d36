// The property lists that applications have registered as services: a file with one path a line, which outlives a
// restart of the machine.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace halvo::sim {

class Registrations {
 public:
  explicit Registrations(std::filesystem::path file);

  [[nodiscard]] std::vector<std::filesystem::path> all() const;
  [[nodiscard]] bool holds(const std::filesystem::path& plist) const;
  // The one with this file name.
  [[nodiscard]] std::optional<std::filesystem::path> named(const std::string& plistName) const;
  // False when the file cannot be written. Adding what is there already changes nothing.
  [[nodiscard]] bool add(const std::filesystem::path& plist) const;
  [[nodiscard]] bool remove(const std::filesystem::path& plist) const;

 private:
  [[nodiscard]] bool write(const std::vector<std::filesystem::path>& plists) const;

  std::filesystem::path file_;
};

}  // namespace halvo::sim
