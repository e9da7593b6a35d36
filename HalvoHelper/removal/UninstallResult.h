// How an uninstall request ended, and the text that tells the client.
#pragma once

#include <string>
#include <variant>

namespace halvo {

// Every checked part is gone; the application bundle is left for a request of its own.
struct UninstallOk {
  std::string guiAppPath;
  bool operator==(const UninstallOk&) const = default;
};
// Something is still there; the log says what.
struct UninstallIncomplete {
  std::string logPath;
  bool operator==(const UninstallIncomplete&) const = default;
};
// Audio is running and the caller did not accept an interruption; nothing was changed.
struct UninstallAudioActive {
  bool operator==(const UninstallAudioActive&) const = default;
};

using UninstallResult = std::variant<UninstallOk, UninstallIncomplete, UninstallAudioActive>;

// One line of JSON with "code" first and no blanks. Paths are inserted as they are: they are constants of the program
// that need no escaping.
[[nodiscard]] std::string halvoUninstallResultJSON(const UninstallResult& result);

}  // namespace halvo
