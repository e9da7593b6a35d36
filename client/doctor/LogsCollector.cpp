#include "client/doctor/LogsCollector.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "HalvoHelper/system/ProductPaths.h"
#include "HalvoHelper/text/Text.h"
#include "client/doctor/ShortText.h"

namespace halvo {
namespace {

using std::chrono::system_clock;

constexpr std::size_t kRead = std::size_t{64} * 1024;
constexpr std::size_t kLongestMessage = 200;

constexpr std::array<std::string_view, 4> kRefusals = {"REFUSED", "refusing downgrade: ", "installer failed; ",
                                                       "uninstall incomplete; "};
// An install says this when it has succeeded, a removal before it looks what is left.
constexpr std::string_view kSuccess = "coreaudiod restart rc=";

constexpr std::string_view kDatePattern = "0000-00-00 00:00:00";
constexpr std::string_view kZone = " +0000";
constexpr std::string_view kBehindDate = ": ";

bool isDate(std::string_view text) {
  const std::string_view digits = text.substr(0, kDatePattern.size());
  return text.substr(digits.size()) == kZone && std::ranges::equal(digits, kDatePattern, [](char c, char expected) {
           return expected == '0' ? c >= '0' && c <= '9' : c == expected;
         });
}

int numberAt(std::string_view date, std::size_t from, std::size_t length) {
  return static_cast<int>(halvoParseDecimal(date.substr(from, length)).value_or(0));
}

// In seconds: a year of four digits has too many nanoseconds.
std::optional<std::chrono::sys_seconds> timeOf(std::string_view date) {
  using namespace std::chrono;
  const year_month_day day{year(numberAt(date, 0, 4)), month(static_cast<unsigned>(numberAt(date, 5, 2))),
                           std::chrono::day(static_cast<unsigned>(numberAt(date, 8, 2)))};
  if (!day.ok()) return std::nullopt;
  return sys_days(day) + hours(numberAt(date, 11, 2)) + minutes(numberAt(date, 14, 2)) + seconds(numberAt(date, 17, 2));
}

struct Line {
  std::string_view date;
  std::string_view message;
};

// Empty for a line that does not begin with a date, such as the rest of one that holds a line feed.
Line taken(std::string_view text) {
  const std::string_view date = text.substr(0, kDatePattern.size() + kZone.size());
  const std::string_view rest = text.substr(date.size());
  if (!isDate(date) || !rest.starts_with(kBehindDate)) return {};
  return {date, rest.substr(kBehindDate.size())};
}

bool isRefusal(std::string_view message) {
  return std::ranges::any_of(kRefusals, [&](std::string_view begin) { return message.starts_with(begin); });
}

Refusal refusalIn(const Line& line, system_clock::time_point now) {
  Refusal refusal{.date = std::string(line.date), .age = {}, .message = shortened(line.message, kLongestMessage)};
  if (const auto time = timeOf(line.date)) refusal.age = std::chrono::floor<Seconds>(now) - *time;
  return refusal;
}

LogView collectLog(const Disk& disk, const char* path, system_clock::time_point now) {
  LogView view{.path = path, .item = disk.look(path), .refusal = {}};
  view.sight = view.item.sight;
  if (view.item.kind != ItemKind::file) return view;
  const Contents end = disk.tail(path, kRead);
  view.sight = end.sight;
  view.refusal = lastRefusal(end.bytes, now);
  return view;
}

}  // namespace

std::optional<Refusal> lastRefusal(std::string_view log, system_clock::time_point now) {
  std::optional<Refusal> last;
  for (const std::string_view text : halvoSplit(log, [](char32_t c) { return c == '\n'; })) {
    const Line line = taken(text);
    if (isRefusal(line.message)) last = refusalIn(line, now);
    if (last && line.message.starts_with(kSuccess)) last->overcome = true;
  }
  return last;
}

std::vector<LogView> collectLogs(const Disk& disk, system_clock::time_point now) {
  return {collectLog(disk, kInstallLogPath, now), collectLog(disk, kUninstallLogPath, now)};
}

}  // namespace halvo
