#include "platform/SystemLog.h"

#include <os/log.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "platform/mac/UnicodeText.h"

namespace halvo {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// The log takes a C string. A NUL in the middle would hide what stands behind it, and of text that is not UTF-8 the
// log's readers show a complaint instead.
std::string shownInFull(std::string_view line) {
  std::string text = utf8FromUTF16(utf16FromUTF8(line));
  for (std::size_t nul = text.find('\0'); nul != std::string::npos; nul = text.find('\0', nul)) {
    text.replace(nul, 1, kReplacement);
  }
  return text;
}

// The log itself shows nothing in a terminal. One write: lines of several threads stay whole.
void showOnStandardError(std::string text) {
  text += '\n';
  static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) < 0);
}

}  // namespace

void halvoSystemLog(std::string_view line) {
  if (line.empty()) return;
  std::string text = shownInFull(line);
  // What a format does not call public, macOS may show as "<private>", and nobody could tell what the helper did.
  os_log(OS_LOG_DEFAULT, "%{public}s", text.c_str());
  showOnStandardError(std::move(text));
}

}  // namespace halvo
