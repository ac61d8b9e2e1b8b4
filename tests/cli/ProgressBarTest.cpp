// What is shown of the reading of long recordings, on terminals of several widths.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/OnTerminal.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

class ProgressBar : public testing::Test {
 protected:
  // Eleven million frames of silence, which take no room on the disk; a tenth of that is short.
  std::string writeSilence(const std::string &name, sf_count_t frames) {
    const std::string file = mFolder.path(name);
    SF_INFO info{};
    info.samplerate = 8000;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *sound = sf_open(file.c_str(), SFM_WRITE, &info);
    const std::vector<short> silence(static_cast<std::size_t>(frames));
    sf_writef_short(sound, silence.data(), frames);
    sf_close(sound);
    return file;
  }

  TestFolder mFolder;
};

// What stood on the line, one after the other, as a terminal would show it.
std::vector<std::string> linesShown(const std::string &screen) {
  std::vector<std::string> lines;
  for (std::size_t at = screen.find('\r'); at != std::string::npos;) {
    const std::size_t next = screen.find('\r', at + 1);
    std::string line = screen.substr(at + 1, next == std::string::npos ? next : next - at - 1);
    lines.push_back(line.substr(0, line.find("\x1b[K")));
    at = next;
  }
  return lines;
}

// Of UTF-8, in which what follows a character's first byte begins with the bits 10.
std::ptrdiff_t columns(const std::string &line) {
  return std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

TEST_F(ProgressBar, GrowsWhileALongRecordingIsReadAndIsGoneAfterwards) {
  const std::string file = writeSilence("long.wav", 11'000'000);
  const auto [status, screen] = runOnTerminal({"analyze", file}, 60);
  EXPECT_EQ(status, 0);
  const std::vector<std::string> lines = linesShown(screen);
  ASSERT_GE(lines.size(), 101U) << screen;
  // 59 columns: five of percent, three around the bar, half of the rest for it.
  EXPECT_TRUE(lines.front().ends_with(" [..........................]   0%")) << lines.front();
  EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string &line) {
    return line.ends_with(" [#############.............]  50%");
  })) << screen;
  EXPECT_EQ(lines.back(), "");
  for (const std::string &line : lines)
    EXPECT_LE(columns(line), 59) << line;
}

TEST_F(ProgressBar, IsANumberWhereThereIsNoRoomForMore) {
  const std::string file = writeSilence("long.wav", 11'000'000);
  const auto [status, screen] = runOnTerminal({"analyze", file}, 18);
  EXPECT_EQ(status, 0);
  const std::vector<std::string> lines = linesShown(screen);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "   0%");
  EXPECT_NE(std::find(lines.begin(), lines.end(), " 100%"), lines.end()) << screen;
}

TEST_F(ProgressBar, IsNotShownForAShortRecording) {
  const std::string file = writeSilence("short.wav", 1'000'000);
  EXPECT_EQ(runOnTerminal({"analyze", file}, 60).screen, "");
}

}  // namespace
}  // namespace orvane::test
