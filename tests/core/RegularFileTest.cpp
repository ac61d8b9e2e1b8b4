#include "core/RegularFile.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/TemporaryFolder.h"

namespace orvane::test {
namespace {

TEST(RegularFile, StandsBehindAsManyLinksAsTheSystemFollows) {
  const TemporaryFolder folder;
  // Forty, after which the system gives up.
  for (int link = 1; link <= 41; ++link)
    std::filesystem::create_symlink(std::to_string(link - 1), folder / std::to_string(link));
  EXPECT_EQ(fileBehindLinks(folder / "0"), folder / "0");
  EXPECT_EQ(fileBehindLinks(folder / "1"), folder / "0");
  EXPECT_EQ(fileBehindLinks(folder / "40"), folder / "0");
  EXPECT_EQ(fileBehindLinks(folder / "41"), folder / "1");
}

TEST(RegularFile, StandsInTheFolderThatALinkNames) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "there");
  std::filesystem::create_symlink("there/next", folder / "relative");
  std::filesystem::create_symlink(folder / "elsewhere", folder / "there/next");
  EXPECT_EQ(fileBehindLinks(folder / "relative"), folder / "elsewhere");
}

TEST(RegularFile, LinksThatLeadToEachOtherStayLinks) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("b", folder / "a");
  std::filesystem::create_symlink("a", folder / "b");
  EXPECT_TRUE(std::filesystem::is_symlink(fileBehindLinks(folder / "a")));
}

}  // namespace
}  // namespace orvane::test
