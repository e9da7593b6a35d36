// The faults of one call each on real files: what is promised holds there too, and a part that is back or was never
// touched is what it was, its owner, permissions, times and extended attributes included.
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "HalvoHelper/testing/FaultMatrixTest.h"
#include "HalvoHelper/testing/FileState.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

namespace fs = std::filesystem;

constexpr const char* kAttribute = "user.com.halvo.mark";

std::vector<std::string> itemsOf(const std::string& part) {
  std::vector<std::string> items;
  if (!isNamed(part)) return items;
  items.push_back(part);
  if (!fs::is_directory(part)) return items;
  for (const auto& item : fs::recursive_directory_iterator(part)) items.push_back(item.path().string());
  std::ranges::sort(items);
  return items;
}

// Gives an item what no fresh copy has by accident. Changing the owner takes root.
void dress(const std::string& item) {
  ::chmod(item.c_str(), fs::is_directory(item) ? 0751 : 0640);
  if (::geteuid() == 0 && ::chown(item.c_str(), 501, 20) != 0) throw std::runtime_error("chown " + item);
  ::setxattr(item.c_str(), kAttribute, "kept", 4, 0);
  setTimes(item, {1'700'000'000, 123'456'789});
}

std::string describe(const std::string& item) {
  struct stat info {};
  ::lstat(item.c_str(), &info);
  std::array<char, 16> mark{};
  const ssize_t size = ::getxattr(item.c_str(), kAttribute, mark.data(), mark.size());
  std::ostringstream line;
  line << item << " " << std::oct << info.st_mode << std::dec << " " << info.st_uid << ":" << info.st_gid << " "
       << info.st_mtimespec.tv_sec << "." << info.st_mtimespec.tv_nsec << " "
       << std::string(mark.data(), size > 0 ? static_cast<std::size_t>(size) : 0) << " "
       << (fs::is_directory(item) ? "" : contentsOf(item));
  return line.str();
}

std::string describePart(const std::string& part) {
  std::string text;
  for (const std::string& item : itemsOf(part)) text += describe(item) + "\n";
  return text;
}

class FaultsOnDiskTest : public FaultMatrixTest {
 protected:
  // Every fault alone, each on a machine of its own.
  static std::vector<std::string> breachesOnDisk() {
    std::vector<std::string> all = breachesOnDiskWith({});
    for (const Faults& faults : oneMoreFault(runOnDisk({}, [](const std::string&) {}))) {
      for (std::string& breach : breachesOnDiskWith(faults)) all.push_back(std::move(breach));
    }
    return all;
  }

 private:
  using Look = std::function<void(const std::string& root)>;

  static FaultRun runOnDisk(const Faults& faults, const Look& look) {
    const TemporaryDirectory directory;
    return halvoRunWith(road(), faults, std::make_shared<DiskTree>(directory.path()), [&] { look(directory.path()); });
  }

  static std::vector<std::string> breachesOnDiskWith(const Faults& faults) {
    std::vector<std::string> looks;
    const FaultRun run = runOnDisk(faults, [&](const std::string& root) {
      if (looks.empty()) dressParts(root);
      for (const char* part : kMachineParts) looks.push_back(describePart(root + part));
    });
    std::vector<std::string> breaches = breachesOf(run);
    std::istringstream words(run.parts);
    for (std::size_t i = 0; i < kMachineParts.size(); ++i) {
      std::string word;
      words >> word;
      if (word == "old" && looks[i] != looks[i + kMachineParts.size()]) breaches.push_back(looks[i] + "differs");
    }
    for (std::string& breach : breaches) breach = faultsInWords(run) + ": " + breach;
    return breaches;
  }

  static void dressParts(const std::string& root) {
    for (const char* part : kMachineParts) {
      std::vector<std::string> items = itemsOf(root + part);
      // A directory after what is in it, whose change would give it another time.
      std::ranges::reverse(items);
      std::ranges::for_each(items, dress);
    }
  }
};

TEST_P(FaultsOnDiskTest, EachFaultAloneLeavesWhatIsPromised) { EXPECT_THAT(breachesOnDisk(), testing::IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(Installs, FaultsOnDiskTest, testing::ValuesIn(pairedRoadsOf(Road::Request::install)),
                         roadName);
INSTANTIATE_TEST_SUITE_P(Removals, FaultsOnDiskTest, testing::ValuesIn(pairedRoadsOf(Road::Request::uninstall)),
                         roadName);

}  // namespace
}  // namespace halvo
