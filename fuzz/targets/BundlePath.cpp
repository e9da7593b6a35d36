// The path that a client wants removed as the product's bundle. The input: a byte that says which markers are there,
// how the path resolves and whether the removal succeeds; the path; what it resolves to.
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "HalvoHelper/removal/AppBundleGuard.h"
#include "HalvoHelper/removal/AppBundleRemoval.h"
#include "HalvoHelper/testing/ScriptedPrivilegedFS.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Require.h"
#include "fuzz/support/Rules.h"
#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

constexpr std::array<const char*, 3> kMarkers = {"halvo-helper", "halvo-app", "halvo-daemon"};

bool isAcceptable(const std::string& path) {
  const auto names = pieces(path, slashAt);
  return path.find('/') == 0 && !contains(path, "..") && !contains(path, std::string_view("\0", 1)) && !names.empty() &&
         names.back() == "Halvo.app";
}

// For acceptable paths only.
std::string markerIn(const std::string& path, const char* name) {
  std::string marker;
  for (const std::string& piece : pieces(path, slashAt)) marker += "/" + piece;
  return marker + "/Contents/MacOS/" + name;
}

struct Request {
  unsigned switches = 0;
  std::string path;
  std::optional<std::string> resolved;

  [[nodiscard]] bool hasMarker(std::size_t index) const { return (switches >> index) % 2 == 1; }
  [[nodiscard]] bool removalSucceeds() const { return (switches & 16U) == 0; }
};

Request requestFrom(std::string_view bytes) {
  Input input(bytes);
  Request request{.switches = input.byte(), .path = input.text(), .resolved = input.rest()};
  if ((request.switches & 8U) != 0) request.resolved.reset();
  if ((request.switches & 32U) != 0) request.resolved = request.path;
  return request;
}

// The calls that the request must lead to, one a line, and its answer.
struct Course {
  std::vector<std::string> calls;
  bool answer = false;
};

Course courseByTheRules(const Request& request) {
  Course course;
  bool isOurs = false;
  for (std::size_t i = 0; i < kMarkers.size() && isAcceptable(request.path) && !isOurs; ++i) {
    course.calls.push_back("exists " + markerIn(request.path, kMarkers[i]));
    isOurs = request.hasMarker(i);
  }
  if (!isOurs) {
    course.calls.push_back("log halvo-helper: refused to remove non-Halvo path " + request.path);
    return course;
  }
  course.calls.push_back("realpath " + request.path);
  if (!request.resolved || !isAcceptable(*request.resolved)) {
    course.calls.push_back("log halvo-helper: refused to remove (failed realpath re-validation) " + request.path);
    return course;
  }
  course.calls.push_back("removeTree " + *request.resolved);
  course.answer = request.removalSucceeds();
  return course;
}

Course courseOf(const Request& request) {
  const auto recorder = std::make_shared<CallRecorder>();
  ScriptedPrivilegedFS fs(recorder);
  for (std::size_t i = 0; i < kMarkers.size(); ++i) {
    if (request.hasMarker(i)) fs.present.insert(markerIn(request.path, kMarkers[i]));
  }
  if (!request.removalSucceeds()) fs.failing.insert("removeTree " + request.resolved.value_or(""));
  const auto realpath = [&](const std::string& path) {
    recorder->calls.push_back("realpath " + path);
    return request.resolved;
  };
  const auto log = [&](std::string_view line) { recorder->calls.push_back("log " + std::string(line)); };
  Course course;
  course.answer = halvoRemoveAppBundle(request.path, fs, realpath, log);
  course.calls = recorder->calls;
  return course;
}

}  // namespace

void check(std::string_view bytes) {
  const Request request = requestFrom(bytes);
  const Course course = courseOf(request);
  const Course expected = courseByTheRules(request);

  require(course.calls == expected.calls, "each check comes in its turn, and the first that fails is the last");
  require(course.answer == expected.answer, "only a removal that succeeded is answered with true");

  const auto safe = halvoResolvedBundlePathIfSafe(request.path, [&](const std::string&) { return request.resolved; });
  require(!safe || *safe == request.resolved, "the path that was judged is the one that is removed");
  require(!safe || halvoResolvedBundlePathIfSafe(*safe, [&](const std::string& path) { return path; }) == safe,
          "a path that is safe stays safe");
}

}  // namespace halvo::fuzz
