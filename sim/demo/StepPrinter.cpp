#include "sim/demo/StepPrinter.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "sim/demo/Meaning.h"

namespace halvo::sim {
namespace {

constexpr std::size_t kNarrowest = 24;

bool beginsCodePoint(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

std::size_t codePoints(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, beginsCodePoint));
}

// How many bytes the first `count` code points take.
std::size_t bytesOf(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  while (at < text.size() && (!beginsCodePoint(text[at]) || count-- > 0)) ++at;
  return at;
}

// Where a line that has room for that many code points ends.
std::size_t lineEnd(std::string_view text, std::size_t room) {
  const std::size_t most = bytesOf(text, room);
  if (most == text.size()) return most;
  const std::size_t blank = text.rfind(' ', most);
  return blank == std::string_view::npos || blank == 0 ? most : blank;
}

constexpr std::size_t kLabelWidth = 10;
constexpr std::size_t kNumberWidth = 4;

std::string padded(std::string_view text, std::size_t width) {
  return std::string(text) + std::string(width - std::min(width, text.size()), ' ');
}

// The changes as lines. A folder that came or went stands for what it holds.
std::vector<std::string> summarised(const std::vector<TreeChange>& changes) {
  std::vector<std::string> lines;
  std::string folder;
  TreeChange::Kind kind{};
  std::size_t below = 0;
  const auto finish = [&] {
    if (below != 0) lines.back() += " and what is in it, " + std::to_string(below) + " items";
    below = 0;
  };
  for (const TreeChange& change : changes) {
    const bool covered = !lines.empty() && change.kind == kind && change.path.starts_with(folder + "/");
    if (covered && kind != TreeChange::Kind::changed) {
      ++below;
      continue;
    }
    finish();
    lines.push_back(describe(change));
    folder = change.path;
    kind = change.kind;
  }
  finish();
  if (lines.empty()) lines.emplace_back("nothing changed");
  return lines;
}

template <typename Item, typename Text>
std::vector<std::string> texts(const std::vector<Item>& items, Text text) {
  std::vector<std::string> lines;
  std::ranges::transform(items, std::back_inserter(lines), text);
  return lines;
}

std::string replyLine(const Request& request) {
  return (request.reply.empty() ? "(none)" : request.reply) + "   exit status " + std::to_string(request.status);
}

}  // namespace

std::size_t widthOf(int descriptor, const char* columns) {
  std::size_t said = 0;
  if (columns != nullptr) std::from_chars(columns, columns + std::strlen(columns), said);
  if (said != 0) return said;
  winsize size{};
  return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : kNoWidth;
}

std::vector<std::string> folded(std::string_view first, std::string_view rest, std::string_view text,
                                std::size_t width) {
  if (width == kNoWidth) return {std::string(first) + std::string(text)};
  std::vector<std::string> lines;
  do {
    const std::string_view prefix = lines.empty() ? first : rest;
    const std::size_t end = lineEnd(text, std::max(width, kNarrowest) - codePoints(prefix));
    lines.push_back(std::string(prefix) + std::string(text.substr(0, end)));
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(' ', end)));
  } while (!text.empty());
  return lines;
}

StepPrinter::StepPrinter(std::ostream& out, Detail detail, std::size_t width)
    : out_(out), detail_(detail), width_(width) {}

void StepPrinter::print(const Step& step) const {
  if (detail_ == Detail::everything) {
    block(step);
  } else {
    verdict(step);
  }
  out_ << std::flush;
}

bool StepPrinter::conclude(const std::vector<Step>& steps) const {
  if (detail_ == Detail::everything) {
    out_ << "\n== Summary\n";
    for (const Step& step : steps) verdict(step);
  }
  out_ << "\n";
  const auto fine = [](const Step& step) { return step.surprises.empty(); };
  if (std::ranges::all_of(steps, fine)) {
    out_ << (steps.size() == 1 ? "The step" : "All " + std::to_string(steps.size()) + " steps")
         << " went as expected.\n";
    return true;
  }
  for (const Step& step : steps) {
    for (const std::string& surprise : step.surprises) line("Different in \"" + step.title + "\": ", surprise);
  }
  return false;
}

void StepPrinter::block(const Step& step) const {
  out_ << "\n";
  line("== ", std::to_string(step.number) + ". " + step.title);
  list("request", texts(step.requests, [](const Request& request) { return request.command; }));
  list("reply", texts(step.requests, replyLine));
  list("tools", texts(step.tools, [](const ToolCall& call) { return describe(call); }));
  list("on disk", summarised(changesBetween(step.before, step.after)));
  list("note", step.remarks);
  list("SURPRISE", step.surprises);
}

void StepPrinter::verdict(const Step& step) const {
  const std::string number = std::to_string(step.number);
  const std::string first = std::string(kNumberWidth - std::min(kNumberWidth, number.size()), ' ') + number +
                            (step.surprises.empty() ? "  as expected  " : "  DIFFERENT    ");
  line(first, step.title);
}

void StepPrinter::list(std::string_view label, const std::vector<std::string>& lines) const {
  for (const std::string& text : lines) line("  " + padded(&text == &lines.front() ? label : "", kLabelWidth), text);
}

// What does not fit goes on below, two further to the right.
void StepPrinter::line(std::string_view first, std::string_view text) const {
  constexpr std::size_t kFurther = 2;
  constexpr std::size_t kFurthest = 19;
  const std::string rest(std::min(first.size() + kFurther, kFurthest), ' ');
  for (const std::string& part : folded(first, rest, text, width_)) out_ << part << "\n";
}

}  // namespace halvo::sim
