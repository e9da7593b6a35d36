// The manual page of halvo-sim knows the commands, options and files that there are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "HalvoHelper/testing/ManualPage.h"
#include "sim/machine/Commands.h"

namespace halvo::sim {
namespace {

using Words = std::vector<std::string>;
using testing::UnorderedElementsAreArray;

std::string manualPage() { return contentsOf(HALVO_SIM_MANUAL_PAGE); }

std::string helpOf(const Words& words) {
  std::ostringstream out;
  halvoSim(words, {.out = out, .err = out});
  return out.str();
}

// One a line behind two blanks, after this heading.
Words commands() {
  const std::string help = helpOf({"--help"});
  return matchesIn(help.substr(help.find("Subcommands:\n")), "\n  ([a-z]+) ");
}

Words optionsOf(const std::string& command) { return matchesIn(helpOf({command, "--help"}), "\n  --([a-z-]+)"); }
Words argumentsOf(const std::string& command) { return matchesIn(helpOf({command, "--help"}), "\n  ([A-Z]+) TEXT"); }

// From the command to the next use of the program's name.
std::string synopsisOf(const std::string& command) {
  const std::string synopsis = sectionOf(manualPage(), "SYNOPSIS");
  const std::size_t begin = synopsis.find(".Cm " + command + "\n");
  return begin == std::string::npos ? "" : synopsis.substr(begin, synopsis.find("\n.Nm", begin) - begin);
}

Words allOptions() {
  Words all;
  for (const std::string& command : commands()) {
    const Words options = optionsOf(command);
    all.insert(all.end(), options.begin(), options.end());
  }
  return all;
}

TEST(SimulatorManualPageTest, TheProgramTellsItsCommandsAndOptions) {
  EXPECT_THAT(commands(), testing::Contains("package"));
  EXPECT_THAT(allOptions(), testing::Contains("truncate-payload"));
}

TEST(SimulatorManualPageTest, DescribesEveryCommandAndNoOther) {
  EXPECT_THAT(matchesIn(sectionOf(manualPage(), "DESCRIPTION"), "\n\\.It Cm ([a-z]+)"),
              UnorderedElementsAreArray(commands()));
}

TEST(SimulatorManualPageTest, DescribesEveryOptionAndNoOther) {
  Words expected = allOptions();
  expected.emplace_back("help");

  EXPECT_THAT(matchesIn(sectionOf(manualPage(), "DESCRIPTION"), "\n\\.It (?:Fl h , )?Fl -([a-z-]+)"),
              UnorderedElementsAreArray(expected));
}

class DocumentedCommand : public testing::TestWithParam<std::string> {};

TEST_P(DocumentedCommand, HasItsOptionsInTheSynopsis) {
  EXPECT_THAT(matchesIn(synopsisOf(GetParam()), "Fl -([a-z-]+)"), UnorderedElementsAreArray(optionsOf(GetParam())));
}

TEST_P(DocumentedCommand, HasItsArgumentsInTheSynopsis) {
  EXPECT_EQ(matchesIn(synopsisOf(GetParam()), "\n\\.Ar ([a-z]+)(?=\n|$)").size(), argumentsOf(GetParam()).size());
}

INSTANTIATE_TEST_SUITE_P(Table, DocumentedCommand, testing::ValuesIn(commands()),
                         [](const auto& row) { return row.param; });

TEST(SimulatorManualPageTest, ListsEveryExitStatusAndNoOther) {
  EXPECT_THAT(itemsOf(sectionOf(manualPage(), "EXIT STATUS")),
              testing::ElementsAre("0", "1", "64", "66", "71", "73", "75", "127"));
}

// A fresh machine's state comes from the list of its files; what a machine writes stands behind it in the page.
TEST(SimulatorManualPageTest, ListsTheScriptedStateOfAFreshMachine) {
  const std::string files = sectionOf(manualPage(), "FILES");

  EXPECT_THAT(matchesIn(files.substr(0, files.find("Written by the machine")), "\n\\.It Pa (sim/[a-z-]+)"),
              UnorderedElementsAreArray(matchesIn(contentsOf(HALVO_SIM_MACHINE_FILES), "\t(sim/[a-z-]+)\t")));
}

}  // namespace
}  // namespace halvo::sim
