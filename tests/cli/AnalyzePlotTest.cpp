// The drawing as a file: that it is there whole or not at all. What it shows is compared by
// tests/reference/analysis.py.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

class AnalyzePlot : public testing::Test {
 protected:
  static std::string content(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto &entry : std::filesystem::directory_iterator(mFolder.path("plots")))
      all.push_back(entry.path().filename());
    std::sort(all.begin(), all.end());
    return all;
  }
  void SetUp() override { std::filesystem::create_directory(mFolder.path("plots")); }

  TestFolder mFolder;
  std::string mTone = mFolder.writeSound("a4.wav", sine(440.0, 8000, 1.0), 8000);
  std::string mPlot = mFolder.path("plots/a4.svg");
};

TEST_F(AnalyzePlot, TheReadingsAreSaidAsWithoutIt) {
  const CommandResult plain = runCommand({"analyze", mTone});
  const CommandResult plotted = runCommand({"analyze", mTone, "--plot", mPlot});
  EXPECT_EQ(plotted.exitCode, 0);
  EXPECT_EQ(plotted.errors, "");
  EXPECT_EQ(plotted.output, plain.output);
  EXPECT_TRUE(content(mPlot).starts_with("<?xml ") && content(mPlot).ends_with("</svg>\n"));
  EXPECT_EQ(names(), std::vector<std::string>{"a4.svg"});
}

TEST_F(AnalyzePlot, ANameThatIsNoDrawingsIsRefusedBeforeAnythingIsWritten) {
  for (const std::string &name : {mTone, std::string(), std::string("x.svg.png")}) {
    const CommandResult result = runCommand({"analyze", mTone, "--plot", name});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, "orvane-cli: --plot: '" + name + "' does not end in .svg\n");
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(AnalyzePlot, ARecordingIsNeverReplacedByItsDrawingUnderWhateverName) {
  const std::string song = mFolder.path("plots/song.svg");
  std::filesystem::copy_file(mTone, song);
  std::filesystem::create_hard_link(song, mFolder.path("plots/hard.svg"));
  std::filesystem::create_symlink("song.svg", mFolder.path("plots/soft.svg"));
  for (const std::string &name : {song, mFolder.path("plots/../plots/song.svg"),
                                  mFolder.path("plots/hard.svg"), mFolder.path("plots/soft.svg")}) {
    const CommandResult result = runCommand({"analyze", mTone, song, "--plot", name});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors,
              "orvane-cli: --plot: '" + name + "' is a recording that is to be read\n");
    EXPECT_EQ(result.output, "");
  }
  EXPECT_EQ(content(song), content(mTone));
  EXPECT_EQ(names(), (std::vector<std::string>{"hard.svg", "soft.svg", "song.svg"}));
}

TEST_F(AnalyzePlot, AWriteProtectedDrawingStays) {
  mFolder.write("plots/a4.svg", "old");
  ::chmod(mPlot.c_str(), 0444);
  CommandOptions heeding;
  heeding.heedsModes = true;
  const CommandResult result = runCommand({"analyze", mTone, "--plot", mPlot}, heeding);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: " + mPlot + ": Permission denied\n");
  EXPECT_EQ(content(mPlot), "old");
  EXPECT_EQ(names(), std::vector<std::string>{"a4.svg"});
}

TEST_F(AnalyzePlot, AnOldDrawingIsReplacedAndKeepsItsPermissions) {
  mFolder.write("plots/a4.svg", "old");
  ::chmod(mPlot.c_str(), 0640);
  EXPECT_EQ(runCommand({"analyze", mTone, "--plot", mPlot}).exitCode, 0);
  EXPECT_TRUE(content(mPlot).ends_with("</svg>\n"));
  struct stat status {};
  ASSERT_EQ(::stat(mPlot.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(AnalyzePlot, ADrawingBehindALinkIsReplacedWhereItIs) {
  mFolder.write("plots/real.svg", "old");
  std::filesystem::create_symlink("real.svg", mPlot);
  EXPECT_EQ(runCommand({"analyze", mTone, "--plot", mPlot}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(mPlot));
  EXPECT_TRUE(content(mFolder.path("plots/real.svg")).ends_with("</svg>\n"));
}

TEST_F(AnalyzePlot, ALinkToADrawingThatIsNotThereYetIsFollowed) {
  std::filesystem::create_symlink("../new.svg", mPlot);
  EXPECT_EQ(runCommand({"analyze", mTone, "--plot", mPlot}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(mPlot));
  EXPECT_TRUE(content(mFolder.path("new.svg")).ends_with("</svg>\n"));
}

TEST_F(AnalyzePlot, WhatIsNoFileIsNotReplaced) {
  const std::string pipe = mFolder.path("plots/pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink("pipe", mPlot);
  EXPECT_EQ(runCommand({"analyze", mTone, "--plot", mPlot}).errors,
            "orvane-cli: " + mPlot + ": is no regular file\n");
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));

  const std::string loop = mFolder.path("plots/loop.svg");
  std::filesystem::create_symlink("loop.svg", loop);
  const CommandResult result = runCommand({"analyze", mTone, "--plot", loop});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: " + loop + ": Too many levels of symbolic links\n");
  EXPECT_TRUE(std::filesystem::is_symlink(loop));
  EXPECT_EQ(names(), (std::vector<std::string>{"a4.svg", "loop.svg", "pipe"}));
}

TEST_F(AnalyzePlot, AFullDiskLeavesTheOldDrawing) {
  mFolder.write("plots/a4.svg", "old");
  CommandOptions limited;
  limited.mostBytes = 2000;
  const CommandResult result = runCommand({"analyze", mTone, "--plot", mPlot}, limited);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: " + mPlot + ": File too large\n");
  EXPECT_EQ(content(mPlot), "old");
  EXPECT_EQ(names(), std::vector<std::string>{"a4.svg"});
}

TEST_F(AnalyzePlot, APlaceThatCannotBeWrittenIsTold) {
  const CommandResult none = runCommand({"analyze", mTone, "--plot", "/no/such/a4.svg"});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_EQ(none.errors, "orvane-cli: /no/such/a4.svg: No such file or directory\n");
  std::filesystem::create_directory(mPlot);
  const CommandResult folder = runCommand({"analyze", mTone, "--plot", mPlot});
  EXPECT_EQ(folder.exitCode, 1);
  EXPECT_EQ(folder.errors, "orvane-cli: " + mPlot + ": is a folder\n");
  EXPECT_EQ(names(), std::vector<std::string>{"a4.svg"});
}

TEST_F(AnalyzePlot, ARecordingThatCannotBeOpenedHasNoPanelAndNoneAtAllNoDrawing) {
  EXPECT_EQ(runCommand({"analyze", "/no/such", mTone, "--plot", mPlot}).exitCode, 1);
  const std::string one = content(mPlot);
  EXPECT_EQ(runCommand({"analyze", mTone, mTone, "--plot", mPlot}).exitCode, 0);
  EXPECT_NE(one.find("height=\"430\""), std::string::npos);
  EXPECT_NE(content(mPlot).find("height=\"860\""), std::string::npos);
  const CommandResult result = runCommand({"analyze", "/no/such", "--plot", mPlot});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: /no/such: no such file\n");
  EXPECT_NE(content(mPlot).find("height=\"860\""), std::string::npos) << "the old one stays";
}

}  // namespace
}  // namespace orvane::test
