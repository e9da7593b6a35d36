// Looks at what is installed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/doctor/Disk.h"
#include "client/doctor/Examination.h"

namespace halvo {

// The application, the four parts that a package brings, in the order in which the helper saves them, and the record
// that the system's installer keeps of the package.
[[nodiscard]] std::vector<Part> collectParts(const Disk& disk);

// A text under `key` in the property list `below` a folder, at most 40 bytes of it; the sight is `absent` where there
// is no such text.
struct VersionText {
  Sight sight = Sight::absent;
  std::string text;
};
[[nodiscard]] VersionText readVersion(const Disk& disk, const std::string& path, std::string_view below,
                                      std::string_view key);

// As the helper reads the installed driver's.
[[nodiscard]] VersionText readDriverVersion(const Disk& disk, const std::string& bundle);

}  // namespace halvo
