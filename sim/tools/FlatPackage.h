// A flat package file: a xar archive whose members describe, carry and accompany what is to be installed.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace halvo::sim {

inline constexpr const char* kPackageInfoMember = "PackageInfo";
inline constexpr const char* kPayloadMember = "Payload";
inline constexpr const char* kScriptsMember = "Scripts";
inline constexpr const char* kSignatureReportMember = "signature-report";

class FlatPackage {
 public:
  explicit FlatPackage(std::map<std::string, std::string> members);

  // Reads the whole package; the checksums of its members are verified. Throws ArchiveError, with the reason, when the
  // file cannot be read or is no intact xar archive.
  static FlatPackage read(const std::filesystem::path& file);

  // Throws ArchiveError; then no half package is left at `file`.
  void write(const std::filesystem::path& file) const;

  // The bytes of the member; nothing when the package has no such member.
  [[nodiscard]] std::optional<std::string_view> member(const std::string& name) const;

  bool operator==(const FlatPackage&) const = default;

 private:
  std::map<std::string, std::string> members_;
};

}  // namespace halvo::sim
