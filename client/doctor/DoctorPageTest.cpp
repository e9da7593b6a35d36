// docs/doctor.md knows what the program does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "client/doctor/Reports.h"
#include "client/doctor/testing/HealthyMac.h"

namespace halvo {
namespace {

using Words = std::set<std::string>;

std::string contentsOf(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// What the expression's brackets hold, wherever it matches.
Words wordsIn(const std::string& text, const char* expression) {
  const std::regex pattern(expression);
  Words words;
  std::transform(std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator(),
                 std::inserter(words, words.end()), [](const std::smatch& match) { return match.str(1); });
  return words;
}

std::string sourcesOfTheJudges() {
  std::string text;
  for (const char* subject : {"Operations", "Parts", "Service", "Snapshots"}) {
    text += contentsOf(std::filesystem::path(HALVO_DOCTOR_SOURCES) / (std::string(subject) + "Judge.cpp"));
  }
  return text;
}

Examination fullReport() {
  Examination seen = healthyMac();
  seen.staging.sight = Sight::present;
  seen.logs[0].refusal.emplace();
  seen.tools->push_back({.process = 1, .name = "dscl", .age = Seconds(60)});
  return seen;
}

TEST(DoctorPageTest, ListsEveryFindingAndNoOther) {
  const Words used = wordsIn(sourcesOfTheJudges(), "\"([a-z]+-[a-z]+)\"");

  EXPECT_GT(used.size(), 20U);
  EXPECT_EQ(wordsIn(contentsOf(HALVO_DOCTOR_PAGE), "\n\\| `([a-z]+-[a-z]+)` \\|"), used);
}

TEST(DoctorPageTest, ListsEveryMemberOfTheJSONAndNoOther) {
  const Examination seen = fullReport();

  EXPECT_EQ(wordsIn(contentsOf(HALVO_DOCTOR_PAGE), "\n\\| `(?:[a-z_.\\[\\]]+\\.)?([a-z_]+)` \\|"),
            wordsIn(jsonReport(seen, judge(seen), "", 1), "\"([a-z_]+)\":"));
}

}  // namespace
}  // namespace halvo
