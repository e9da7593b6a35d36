#include "client/LogFollower.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include "client/InputFile.h"
#include "client/Message.h"
#include "client/VisibleText.h"

namespace halvo {
namespace {

std::pair<dev_t, ino_t> identityOf(const InputFile& file) { return {file.info().st_dev, file.info().st_ino}; }

}  // namespace

LogFollower::LogFollower(std::string path) : path_(std::move(path)) {
  const InputFile file(path_);
  if (!file.isOpen()) return;
  identity_ = identityOf(file);
  position_ = file.info().st_size;
}

void LogFollower::printNewLines(std::ostream& err) {
  InputFile file(path_);
  if (!file.isOpen()) return mention(file.error(), err);
  const std::int64_t size = file.info().st_size;
  if (std::exchange(identity_, identityOf(file)) != identityOf(file) || size < position_) position_ = 0;
  const auto text = file.read(position_, static_cast<std::size_t>(size - position_));
  if (!text) return mention(file.error(), err);
  // A line without its line feed is still being written: it is shown when it is complete.
  std::string_view rest = *text;
  for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
    err << "  " << visibleText(rest.substr(0, end)) << "\n";
    rest.remove_prefix(end + 1);
  }
  position_ += static_cast<std::int64_t>(text->size() - rest.size());
  err.flush();
}

void LogFollower::mention(int error, std::ostream& err) {
  if (error == ENOENT) {
    // The next file of that name is a new one, though it may well get the number of the old one.
    position_ = 0;
    return;
  }
  if (std::exchange(mentioned_, true)) return;
  const std::string reason = error == 0 ? "it is no regular file" : std::generic_category().message(error);
  say(err, "The log " + path_ + " cannot be shown: " + reason + ". What the helper does goes on.");
}

}  // namespace halvo
