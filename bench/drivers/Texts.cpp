// What reads text that others wrote. Every verb is "TIMES FILE" and reads the whole file first.
#include <fstream>
#include <string>

#include "HalvoHelper/install/Versions.h"
#include "HalvoHelper/security/PkgTrust.h"
#include "HalvoHelper/system/LoginUsers.h"
#include "HalvoHelperXPC/ReplyParsers.h"
#include "bench/drivers/support/Command.h"

namespace halvo::bench {
namespace {

constexpr const char* kTeam = "QX4TRM2ZL9";

// Where every result goes, so that none is left out as not needed.
volatile std::size_t results = 0;

std::string contentsOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  require(in.good(), path + " cannot be read");
  std::string text(static_cast<std::size_t>(in.tellg()), '\0');
  in.seekg(0).read(text.data(), static_cast<std::streamsize>(text.size()));
  return text;
}

Verb reading(const std::function<std::size_t(const std::string& text)>& read) {
  return [=](const Words& words) {
    const std::string text = contentsOf(words.at(1));
    return std::to_string(nanosecondsOf([&] {
      for (int left = std::stoi(words.at(0)); left > 0; --left) results = results + read(text);
    }));
  };
}

std::size_t verdict(const std::string& report) { return halvoCheckPkgReport(report, kTeam).index(); }

std::size_t accounts(const std::string& listing) { return halvoParseLoginUids(listing).size(); }

std::size_t versions(const std::string& version) {
  return static_cast<std::size_t>(halvoCompareVersions(version, version)) + 1;
}

std::size_t reply(const std::string& text) {
  return static_cast<std::size_t>(halvoParseHelperVersion(text).value_or(0)) + (halvoIsUnauthorizedReply(text) ? 1 : 0);
}

std::size_t manifest(const std::string& text) {
  return halvoParseManifestDriverVersion(text).value_or(std::string()).size();
}

}  // namespace
}  // namespace halvo::bench

int main(int argc, char* argv[]) {
  using namespace halvo::bench;
  return drive({{"verdict", reading(verdict)},
                {"accounts", reading(accounts)},
                {"versions", reading(versions)},
                {"reply", reading(reply)},
                {"manifest", reading(manifest)},
                {"command", timed(runCommand)}},
               argc, argv);
}
