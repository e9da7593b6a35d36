#include "sim/demo/Report.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "sim/demo/Meaning.h"
#include "sim/demo/TimeLine.h"
#include "sim/demo/TreeTable.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isControl(char32_t letter) {
  return (letter < 0x20 && letter != '\t' && letter != '\n') || (letter >= 0x7F && letter < 0xA0);
}

// The number in hundredths, with as many digits behind the point.
std::string decimal(std::int64_t number, std::int64_t unit) {
  std::string digits = std::to_string(number % unit);
  digits.insert(0, std::to_string(unit).size() - 1 - digits.size(), '0');
  return std::to_string(number / unit) + "." + digits;
}

// The content is markup, the attributes are as they stand in the tag.
std::string element(std::string_view name, std::string_view attributes, std::string_view content) {
  std::string text = "<" + std::string(name);
  if (!attributes.empty()) text += " " + std::string(attributes);
  return text + ">" + std::string(content) + "</" + std::string(name) + ">";
}

// Microseconds in milliseconds, as "12.3".
std::string milliseconds(std::int64_t microseconds) { return decimal(microseconds / 100, 10); }

// How much of the whole, as "12.34%"; all of it when the whole is nothing.
std::string percentage(std::int64_t part, std::int64_t whole) {
  constexpr std::int64_t kHundredths = 10'000;
  return decimal(whole == 0 ? kHundredths : part * kHundredths / whole, 100) + "%";
}

std::string cell(std::string_view content, std::string_view attributes = {}) {
  return element("td", attributes, content);
}

std::string code(std::string_view text) { return element("code", {}, escaped(text)); }

// `columns` are the headings, `bodies` the rows as markup.
std::string table(std::string_view caption, const std::vector<std::string_view>& columns, std::string_view bodies) {
  std::string headings;
  for (const std::string_view column : columns) headings += element("th", "scope=\"col\"", column);
  return element("table", {},
                 element("caption", {}, caption) + element("thead", {}, element("tr", {}, headings)) +
                     std::string(bodies)) +
         "\n";
}

std::string stepLink(const Step& step) {
  const std::string number = std::to_string(step.number);
  return element("a", "href=\"#step-" + number + "\"", number + ". " + escaped(step.title));
}

std::string contents(const std::vector<Step>& steps) {
  std::string items;
  for (const Step& step : steps) {
    items += element("li", {}, stepLink(step) + (step.surprises.empty() ? "" : " (went otherwise than expected)"));
  }
  return element("ul", "class=\"contents\"", items);
}

std::string replyOf(const Request& request) {
  return (request.reply.empty() ? "no reply" : code(request.reply)) + ", exit status " + std::to_string(request.status);
}

std::string refusals(const std::vector<Step>& steps) {
  std::string items;
  for (const Step& step : steps) {
    for (const Request& request : step.requests) {
      const auto reason = refusalReason(request);
      if (!reason) continue;
      items += element(
          "li", "class=\"refusal\"",
          stepLink(step) + "<br>" + code(request.command) + "<br>" + replyOf(request) + "<br>" + escaped(*reason));
    }
  }
  return items.empty() ? element("p", {}, "Nothing was refused.") : element("ul", "class=\"contents\"", items);
}

std::string list(std::string_view heading, const std::vector<std::string>& lines) {
  std::string items;
  for (const std::string& line : lines) items += element("li", {}, escaped(line));
  return items.empty() ? "" : element("h3", {}, heading) + element("ul", {}, items) + "\n";
}

std::string requests(const Step& step) {
  std::string items;
  for (const Request& request : step.requests) {
    items += element("li", {}, code(request.command) + "<br>" + replyOf(request));
  }
  return items.empty() ? "" : element("h3", {}, "Requests and replies") + element("ol", {}, items) + "\n";
}

// A bar that leads to its row in the table below.
std::string bar(const Mark& mark, const Span& span, const std::string& row) {
  const Moment whole = span.ended - span.began;
  const std::string words = nameOf(mark.kind) + ", " + mark.text + ", begins at " +
                            milliseconds(mark.began - span.began) + " ms, takes " +
                            milliseconds(mark.ended - mark.began) + " ms";
  return element("li", {},
                 element("a",
                         "class=\"" + nameOf(mark.kind) + "\" href=\"#" + row +
                             "\" style=\"left:" + percentage(mark.began - span.began, whole) +
                             ";width:" + percentage(mark.ended - mark.began, whole) + "\" title=\"" + escaped(words) +
                             "\" aria-label=\"" + escaped(words) + "\"",
                         ""));
}

std::string markRow(const Mark& mark, const Span& span, const std::string& row) {
  const std::string kind = nameOf(mark.kind);
  return element("tr", "id=\"" + row + "\" tabindex=\"-1\"",
                 cell(milliseconds(mark.began - span.began), "class=\"number\"") +
                     cell(milliseconds(mark.ended - mark.began), "class=\"number\"") +
                     cell("<span class=\"key " + kind + "\"></span>" + kind + "<br>" + code(mark.text)));
}

std::string timeLineOf(const Step& step) {
  // A request alone is told by its reply.
  if (step.tools.empty() && step.waits.empty()) return {};
  const std::vector<Track> tracks = timeLine(step);
  const Span span = spanOf(tracks);
  std::string drawn;
  std::string bodies;
  int number = 0;
  for (const Track& track : tracks) {
    std::string bars;
    std::string rows = element("tr", {}, element("th", "scope=\"rowgroup\" colspan=\"3\"", escaped(track.name)));
    for (const Mark& mark : track.marks) {
      const std::string row = "event-" + std::to_string(step.number) + "-" + std::to_string(++number);
      bars += bar(mark, span, row);
      rows += markRow(mark, span, row);
    }
    drawn += element("h4", {}, escaped(track.name)) + element("ul", "class=\"lane\"", bars);
    bodies += element("tbody", {}, rows);
  }
  const Moment whole = span.ended - span.began;
  const std::string axis = element("span", {}, "0 ms") + element("span", {}, milliseconds(whole / 2) + " ms") +
                           element("span", {}, milliseconds(whole) + " ms");
  return element("h3", {}, "Time line") + drawn + element("p", "class=\"axis\"", axis) +
         table("The same in words, in milliseconds", {"At", "Takes", "What"}, bodies);
}

std::string nothingThere() { return "<span aria-hidden=\"true\">–</span><span class=\"hidden\">not there</span>"; }

std::string treeRow(const TreeRow& row) {
  const std::string name = row.path.substr(row.depth == 0 ? 0 : row.path.rfind('/') + 1);
  const std::string hidden = row.path.substr(0, row.path.size() - name.size());
  const std::string label = element("span", "class=\"hidden\"", escaped(hidden)) + escaped(name) +
                            element("span", "class=\"change\"", row.change);
  return element("tr", "class=\"" + row.change + (row.leads ? " way" : "") + "\"",
                 element("th", "scope=\"row\" style=\"--depth:" + std::to_string(row.depth) + "\"", label) +
                     cell(row.before.empty() ? nothingThere() : escaped(row.before)) +
                     cell(row.after.empty() ? nothingThere() : escaped(row.after)));
}

std::string tree(const Step& step) {
  const std::vector<TreeRow> rows = treeRows(step.before, step.after);
  const auto changed = [](const TreeRow& row) { return row.change != "same"; };
  if (std::ranges::none_of(rows, changed)) return element("h3", {}, "On disk") + "<p>Nothing changed.</p>\n";
  std::string lines;
  for (const TreeRow& row : rows) lines += treeRow(row);
  const std::string box = element("label", {}, "<input type=\"checkbox\"> Show what is unchanged, too");
  return element("h3", {}, "On disk") + element("div", "class=\"tree\"",
                                                box + table("The tree before and after the step",
                                                            {"Name", "Before", "After"}, element("tbody", {}, lines)));
}

std::string section(const Step& step) {
  const std::string id = "step-" + std::to_string(step.number);
  const std::string heading =
      element("h2", "id=\"" + id + "\" tabindex=\"-1\"", std::to_string(step.number) + ". " + escaped(step.title));
  const std::string_view went = step.surprises.empty() ? "Went as expected." : "Went otherwise than expected.";
  return element("section", "aria-labelledby=\"" + id + "\"",
                 heading + element("p", "class=\"verdict\"", went) + list("Surprises", step.surprises) +
                     requests(step) + timeLineOf(step) + tree(step) + list("Notes", step.remarks)) +
         "\n";
}

std::string verdict(const std::vector<Step>& steps) {
  const auto fine = std::ranges::count_if(steps, [](const Step& step) { return step.surprises.empty(); });
  return std::to_string(fine) + " of " + std::to_string(steps.size()) + " steps went as expected.";
}

void put(std::string& page, std::string_view place, const std::string& markup) {
  const std::size_t at = page.find(place);
  if (at != std::string::npos) page.replace(at, place.size(), markup);
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string sound;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(sound));
  std::string shown;
  for (auto at = sound.begin(); at != sound.end();) {
    const char32_t letter = utf8::next(at, sound.end());
    utf8::append(isControl(letter) ? kReplacement : letter, std::back_inserter(shown));
  }
  return xmlEscaped(shown);
}

std::string reportPage(std::string_view frame, const std::vector<Step>& steps) {
  std::string all;
  for (const Step& step : steps) all += section(step);
  std::string page(frame);
  // From the last place to the first: what is put in is not searched for further places.
  put(page, "@STEPS@", all);
  put(page, "@REFUSALS@", refusals(steps));
  put(page, "@CONTENTS@", contents(steps));
  put(page, "@VERDICT@", verdict(steps));
  return page;
}

std::filesystem::path reportFrame() { return HALVO_REPORT_FRAME; }

}  // namespace halvo::sim
