#include "sim/tools/SystemTools.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <optional>
#include <ostream>
#include <string_view>
#include <system_error>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "sim/support/ChildProcess.h"
#include "sim/tools/Archive.h"
#include "sim/tools/FlatPackage.h"
#include "sim/tools/Receipts.h"
#include "sim/tools/Xml.h"

namespace halvo::sim {
namespace {

constexpr int kCouldNotRun = -1;

// The Scripts archive in a folder of its own in the machine's /private/tmp, for as long as this lives.
class InstallScripts {
 public:
  InstallScripts(std::string_view archive, const std::filesystem::path& root) : root_(std::filesystem::absolute(root)) {
    std::error_code problem;
    std::filesystem::create_directories(root_ / "private/tmp", problem);
    std::string pattern = (root_ / "private/tmp/PKInstallSandbox.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) return;
    folder_ = pattern;
    complete_ = unpack(archive, folder_).problem.empty();
  }
  InstallScripts(const InstallScripts&) = delete;
  InstallScripts& operator=(const InstallScripts&) = delete;
  ~InstallScripts() {
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }

  // Runs the script of that name in the folder. Blocks until it has ended; what it prints goes to
  // /private/var/log/install.log. Answers its exit status, 0 when there is no such script, and -1 when it could not be
  // run or the archive could not be unpacked.
  [[nodiscard]] int run(const std::string& name, std::vector<std::string> words) const {
    if (!complete_) return kCouldNotRun;
    const std::filesystem::path script = folder_ / name;
    std::error_code problem;
    if (!std::filesystem::exists(script, problem)) return 0;
    const std::filesystem::path log = root_ / "private/var/log/install.log";
    std::filesystem::create_directories(log.parent_path(), problem);
    const UniqueDescriptor output(::open(log.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
    const UniqueDescriptor input = namelessFile();
    words.insert(words.begin(), script);
    const auto child = startChild(words, {input.get(), output.get(), output.get()}, folder_);
    return child ? collectChild(*child) : kCouldNotRun;
  }

 private:
  std::filesystem::path root_;
  std::filesystem::path folder_;
  bool complete_ = false;
};

constexpr std::string_view kNoSoftware =
    "The Installer could not install the software because there was no software found to install.";
constexpr std::string_view kErrorWhileInstalling =
    "The Installer encountered an error that caused the installation to fail. Contact the software manufacturer for "
    "assistance.";

struct Request {
  std::string package;
  std::string target;
};

std::optional<Request> parse(const std::vector<std::string>& arguments) {
  if (arguments.size() != 4) return std::nullopt;
  std::map<std::string, std::string> options = {{arguments[0], arguments[1]}, {arguments[2], arguments[3]}};
  const Request request{.package = options["-pkg"], .target = options["-target"]};
  return request.package.empty() || request.target.empty() ? std::nullopt : std::optional(request);
}

int fail(const ToolStreams& streams, std::string_view reason, const std::string& detail) {
  streams.err << "installer: The install failed. (" << reason;
  if (!detail.empty()) streams.err << " " << detail;
  streams.err << ")\n";
  return 1;
}

// A package that is what it says: who it is, and what it brings.
struct Software {
  std::string identifier;
  std::string version;
  std::string_view payload;
};

std::optional<Software> softwareIn(const FlatPackage& package) {
  const auto info = package.member(kPackageInfoMember);
  const auto payload = package.member(kPayloadMember);
  if (!info || !payload) return std::nullopt;
  const auto identifier = xmlAttribute(*info, "pkg-info", "identifier");
  const auto version = xmlAttribute(*info, "pkg-info", "version");
  if (!identifier || !version) return std::nullopt;
  return Software{.identifier = *identifier, .version = *version, .payload = *payload};
}

int install(const FlatPackage& package, const Request& request, const std::filesystem::path& root,
            const ToolStreams& streams) {
  const std::string fileName = std::filesystem::path(request.package).filename();
  const auto software = softwareIn(package);
  if (!software) return fail(streams, kNoSoftware, {});
  streams.out << "installer: Package name is " << std::filesystem::path(fileName).stem().string() << "\n"
              << "installer: Installing at base path " << request.target << std::endl;
  std::optional<InstallScripts> scripts;
  if (const auto archive = package.member(kScriptsMember)) scripts.emplace(*archive, root);
  const auto succeeds = [&](const char* script) {
    return !scripts || scripts->run(script, {request.package, request.target, "/", "/"}) == 0;
  };
  const std::string scriptFailed =
      "An error occurred while running scripts from the package \xE2\x80\x9C" + fileName + "\xE2\x80\x9D.";
  if (!succeeds("preinstall")) return fail(streams, kErrorWhileInstalling, scriptFailed);
  const Unpacked unpacked = unpack(software->payload, root);
  if (!unpacked.problem.empty()) return fail(streams, kErrorWhileInstalling, unpacked.problem);
  if (!succeeds("postinstall")) return fail(streams, kErrorWhileInstalling, scriptFailed);
  const Receipt receipt{
      .identifier = software->identifier, .version = software->version, .fileName = fileName, .paths = unpacked.paths};
  if (!Receipts(root).keep(receipt)) return fail(streams, kErrorWhileInstalling, "The receipt could not be kept.");
  streams.out << "installer: The install was successful.\n";
  return 0;
}

}  // namespace

int installerTool(const std::vector<std::string>& arguments, const std::filesystem::path& root,
                  const ToolStreams& streams) {
  const auto request = parse(arguments);
  if (!request) {
    streams.err << "Usage: installer -pkg <pathToPackage> -target </>\n";
    return 1;
  }
  if (request->target != "/") {
    streams.err << "installer: Error - the target path specified was invalid: '" << request->target << "'.\n";
    return 1;
  }
  std::error_code problem;
  if (!std::filesystem::exists(request->package, problem)) {
    streams.err << "installer: Error - the package path specified was invalid: '" << request->package << "'.\n";
    return 1;
  }
  try {
    return install(FlatPackage::read(request->package), *request, root, streams);
  } catch (const ArchiveError& unreadable) {
    return fail(streams, kNoSoftware, unreadable.what());
  }
}

}  // namespace halvo::sim
