#include "client/Options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "client/NearestWord.h"

namespace halvo {
namespace {

struct OptionRow {
  std::string_view name;
  std::string_view value;  // what it is; empty for an option that takes none
};

// In the order of the enumeration.
constexpr auto kOptions = std::to_array<OptionRow>({
    {"--help", ""},
    {"--version", ""},
    {"--manifest", "the path of a file"},
    {"--timeout", "a number of seconds"},
    {"--accept-audio-interruption", ""},
    {"--without-grant", ""},
    {"--without-checks", ""},
    {"--open-settings", ""},
    {"--json", ""},
});

constexpr auto kNames = [] {
  std::array<std::string_view, kOptions.size()> names;
  std::ranges::transform(kOptions, names.begin(), &OptionRow::name);
  return names;
}();

// Numbers that no character has.
constexpr int kFirstNumber = 256;

// What getopt_long answers for a word that is no option.
constexpr int kOperand = 1;

std::vector<option> tableForGetopt() {
  std::vector<option> table;
  table.reserve(kOptions.size() + 1);
  for (const OptionRow& row : kOptions) {
    table.push_back({row.name.data() + 2, row.value.empty() ? no_argument : required_argument, nullptr,
                     kFirstNumber + static_cast<int>(table.size())});
  }
  table.push_back({nullptr, 0, nullptr, 0});
  return table;
}

std::optional<Option> optionNumbered(int number) {
  if (number == 'h') return Option::help;
  if (number < kFirstNumber) return std::nullopt;
  return static_cast<Option>(number - kFirstNumber);
}

// C libraries do not agree on what they answer for which mistake: the option itself tells.
std::string complaintAbout(std::string_view word) {
  if (const auto known = optionNumbered(optopt)) {
    const std::string name(nameOf(*known));
    const std::string value(kOptions[static_cast<std::size_t>(*known)].value);
    return value.empty() ? name + " takes no value" : name + " needs " + value;
  }
  const std::string name =
      optopt != 0 ? std::string{'-', static_cast<char>(optopt)} : std::string(word.substr(0, word.find('=')));
  return "'" + name + "' is not an option" + suggestionFor(name, kNames);
}

}  // namespace

bool TypedWords::has(Option option) const {
  return std::ranges::find(options, option, &GivenOption::option) != options.end();
}

TypedWords takeApart(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {"halvo-app"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  const int argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);  // Some C libraries find out by it that a value is missing.

  const std::vector<option> table = tableForGetopt();
  TypedWords typed;
  // Zero begins anew. The minus asks for every word in its order, whatever the environment says of options behind the
  // first operand; the colon keeps the C library from speaking to the user itself.
  optind = 0;
  for (int found = 0; (found = getopt_long(argc, argv.data(), "-:h", table.data(), nullptr)) != -1;) {
    if (found == kOperand) {
      typed.operands.emplace_back(optarg);
    } else if (found == '?' || found == ':') {
      if (!typed.problem) typed.problem = complaintAbout(argv[static_cast<std::size_t>(optind) - 1]);
    } else {
      typed.options.push_back({*optionNumbered(found), optarg == nullptr ? "" : optarg});
    }
  }
  for (; optind < argc; ++optind) typed.operands.emplace_back(argv[static_cast<std::size_t>(optind)]);
  return typed;
}

std::string_view nameOf(Option option) { return kNames[static_cast<std::size_t>(option)]; }

std::span<const std::string_view> optionNames() { return kNames; }

}  // namespace halvo
