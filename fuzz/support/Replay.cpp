// Goes through a target's corpus without libFuzzer: every file of it, and a few hundred inputs that are made of them
// with a fixed seed. Writes the input on which the target ends to finding-<seed>-<number>.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support/Target.h"

namespace halvo::fuzz {
namespace {

constexpr int kMutations = 400;
constexpr std::size_t kLongest = 4096;

// What the target has before it, for the handler of the signal that ends the process.
struct Current {
  std::string input;
  std::string name;
  std::string message;
};
Current current;

void keepFinding(int signal) {
  const int file = ::open(current.name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  const auto isWhole = [](ssize_t written, const std::string& text) {
    return written == static_cast<ssize_t>(text.size());
  };
  if (isWhole(::write(file, current.input.data(), current.input.size()), current.input)) {
    static_cast<void>(isWhole(::write(STDERR_FILENO, current.message.data(), current.message.size()), current.message));
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void run(const std::string& input, const std::string& label) {
  current = {input, "finding-" + label, "the input is in the file finding-" + label + "\n"};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(current.input.data()), current.input.size());
}

std::string contentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry.path());
  std::ranges::sort(files);
  return files;
}

int hexDigit(char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

// The words of a dictionary: what stands in quotation marks, one word a line, with \" and \\ and \xNN.
std::string wordIn(const std::string& line) {
  std::string word;
  for (std::size_t at = line.find('"') + 1; at < line.rfind('"'); ++at) {
    if (line[at] != '\\') {
      word += line[at];
    } else if (line[++at] == 'x') {
      word += static_cast<char>(hexDigit(line[at + 1]) * 16 + hexDigit(line[at + 2]));
      at += 2;
    } else {
      word += line[at];
    }
  }
  return word;
}

std::vector<std::string> wordsIn(const std::filesystem::path& dictionary) {
  std::vector<std::string> words;
  std::ifstream file(dictionary);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('#') && line.find('"') != std::string::npos) words.push_back(wordIn(line));
  }
  return words;
}

class Mutations {
 public:
  Mutations(unsigned seed, std::vector<std::string> inputs, std::vector<std::string> words)
      : random_(seed), inputs_(std::move(inputs)), words_(std::move(words)) {}

  std::string next() {
    std::string input = oneOf(inputs_);
    for (std::size_t i = 0; i <= below(4); ++i) change(input);
    input.resize(std::min(input.size(), kLongest));
    return input;
  }

 private:
  std::size_t below(std::size_t count) { return random_() % std::max<std::size_t>(count, 1); }

  std::string oneOf(const std::vector<std::string>& texts) { return texts.empty() ? "" : texts[below(texts.size())]; }

  void change(std::string& input) {
    const std::size_t at = below(input.size() + 1);
    const std::size_t length = below(16);
    switch (below(6)) {
      case 0:
        input.insert(at, 1, static_cast<char>(below(256)));
        break;
      case 1:
        input.replace(at, std::min<std::size_t>(1, input.size() - at), 1, static_cast<char>(below(256)));
        break;
      case 2:
        input.erase(at, length);
        break;
      case 3:
        input.insert(at, input.substr(below(input.size() + 1), length));
        break;
      case 4:
        input.insert(at, oneOf(words_));
        break;
      default: {
        const std::string other = oneOf(inputs_);
        input = input.substr(0, at) + other.substr(std::min(at, other.size()));
      }
    }
  }

  std::mt19937 random_;
  std::vector<std::string> inputs_;
  std::vector<std::string> words_;
};

int replay(const std::string& dictionary, const std::string& corpus, unsigned seed) {
  std::vector<std::string> inputs;
  for (const auto& file : filesIn(corpus)) {
    inputs.push_back(contentsOf(file));
    run(inputs.back(), file.filename());
  }
  if (inputs.empty()) {
    std::fprintf(stderr, "%s holds no inputs\n", corpus.c_str());
    return EXIT_FAILURE;
  }
  run("", "empty");
  Mutations mutations(seed, inputs, wordsIn(dictionary));
  for (int i = 0; i < kMutations; ++i) run(mutations.next(), std::to_string(seed) + "-" + std::to_string(i));
  std::printf("%zu files and %d mutations with seed %u\n", inputs.size(), kMutations, seed);
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace halvo::fuzz

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() < 3 || words.size() > 4 || words[0] != "--dictionary") {
    std::fprintf(stderr, "usage: %s --dictionary FILE CORPUS [SEED]\n", argv[0]);
    return 64;
  }
  std::signal(SIGABRT, halvo::fuzz::keepFinding);
  constexpr unsigned kSeed = 1;
  const auto seed = words.size() == 4 ? static_cast<unsigned>(std::strtoul(words[3].c_str(), nullptr, 10)) : kSeed;
  return halvo::fuzz::replay(words[1], words[2], seed);
}
