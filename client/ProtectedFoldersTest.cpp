#include "client/ProtectedFolders.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

struct FolderRow {
  const char* name;
  const char* path;
  bool isKept;
};

class FolderOfAMac : public testing::TestWithParam<FolderRow> {};

TEST_P(FolderOfAMac, IsKeptFromDaemonsOrNot) { EXPECT_EQ(isKeptFromDaemons(GetParam().path), GetParam().isKept); }

INSTANTIATE_TEST_SUITE_P(Kept, FolderOfAMac,
                         testing::Values(FolderRow{"Downloads", "/Users/ann/Downloads", true},
                                         FolderRow{"Desktop", "/Users/ann/Desktop", true},
                                         FolderRow{"Documents", "/Users/ann/Documents", true},
                                         FolderRow{"BelowDownloads", "/Users/ann/Downloads/old/older", true},
                                         FolderRow{"InAnotherSpelling", "/users/ann/downLOADS", true},
                                         FolderRow{"ByItsSecondName", "/System/Volumes/Data/Users/ann/Downloads", true},
                                         FolderRow{"InCapitals", "/SYSTEM/VOLUMES/DATA/USERS/ANN/DOCUMENTS", true},
                                         FolderRow{"VolumeByItsSecondName", "/System/Volumes/Data/Volumes/Stick", true},
                                         FolderRow{"OfAHomeWithAnAccent", "/Users/\u00C9va/Documents", true},
                                         FolderRow{"Volume", "/Volumes/Stick", true},
                                         FolderRow{"BelowAVolume", "/Volumes/Stick/a/b", true},
                                         FolderRow{"NetworkFolder", "/Network/Servers/a", true},
                                         FolderRow{"NetworkServer", "/Network/a", true},
                                         FolderRow{"HomeOfOneLetter", "/Users/a/Desktop", true}),
                         [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(Open, FolderOfAMac,
                         testing::Values(FolderRow{"Home", "/Users/ann", false}, FolderRow{"Users", "/Users", false},
                                         FolderRow{"Shared", "/Users/Shared", false},
                                         FolderRow{"OtherFolder", "/Users/ann/Music", false},
                                         FolderRow{"LongerName", "/Users/ann/Downloads2", false},
                                         FolderRow{"DeeperFolderOfThatName", "/Users/ann/Music/Downloads", false},
                                         FolderRow{"FolderOfThatNameElsewhere", "/opt/ann/Downloads", false},
                                         FolderRow{"TemporaryFolder", "/private/var/folders/zz/T", false},
                                         FolderRow{"VolumesThemselves", "/Volumes", false},
                                         FolderRow{"NetworkItself", "/Network", false},
                                         FolderRow{"LongerVolumes", "/Volumes2/a", false},
                                         FolderRow{"DataItself", "/System/Volumes/Data", false},
                                         FolderRow{"OtherData", "/System/Volumes/Database/Users/ann/Downloads", false},
                                         FolderRow{"Top", "/", false}, FolderRow{"Nothing", "", false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ProtectedFoldersTest, WhatCannotBeLookedUpCountsAsItIsWritten) {
  EXPECT_TRUE(liesWhereDaemonsMayNotRead("/Users/nobody-here/Downloads/a.pkg"));
  EXPECT_TRUE(liesWhereDaemonsMayNotRead("/Users/nobody-here/Music/../Downloads/a.pkg"));
  EXPECT_FALSE(liesWhereDaemonsMayNotRead("/Users/nobody-here/Downloads"));
  EXPECT_FALSE(liesWhereDaemonsMayNotRead("/Users/nobody-here/Downloads/../a.pkg"));
}

TEST(ProtectedFoldersTest, AFileCountsWhereTheLinksOnItsWayLeadTo) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory_symlink("/", directory.path() / "top");
  std::filesystem::create_directory_symlink(directory.path(), directory.path() / "Downloads");

  EXPECT_FALSE(liesWhereDaemonsMayNotRead(directory.path("Downloads/a.pkg")));
  EXPECT_FALSE(liesWhereDaemonsMayNotRead(directory.path("top/a.pkg")));
}

}  // namespace
}  // namespace halvo
