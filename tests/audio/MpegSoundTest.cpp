// MPEG streams, whose decoder tells of damage on standard error and nowhere else.
#include <cstdio>

#include <gtest/gtest.h>

#include "audio/SoundFile.h"
#include "tests/BrokenMpeg.h"
#include "tests/audio/SoundFileMaker.h"

namespace orvane {
namespace {

constexpr int kMp3 = SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III;

// One at a time: what is said on standard error meanwhile is kept.
class MpegSound : public testing::Test {
 protected:
  struct Heard {
    std::string reason;  // why it was not opened, or what its trouble was at the end
    std::int64_t frames = -1;
    std::string standardError;
  };

  static Heard hear(const std::filesystem::path &path) {
    testing::internal::CaptureStderr();
    Heard heard;
    if (auto file = SoundFile::open(path, heard.reason)) {
      std::vector<float> samples(static_cast<std::size_t>(1000 * file->channels()));
      heard.frames = 0;
      while (const std::int64_t read = file->readFrames(samples.data(), 1000))
        heard.frames += read;
      heard.reason = file->trouble();
    }
    heard.standardError = testing::internal::GetCapturedStderr();
    return heard;
  }

  const TemporaryFolder mFolder;
  const std::filesystem::path mWhole = writeTestSound(mFolder / "a.mp3", kMp3, 44100, 1, 132300);
};

TEST_F(MpegSound, AWholeOneHasNoTroubleNorWhenNotesFollowThatAreNoSound) {
  const std::string bytes = readBytes(mWhole);
  for (const std::string &behind : {std::string(), "LYRICS" + std::string(3000, 'x')}) {
    const Heard heard = hear(writeBytes(mFolder / "b.mp3", bytes + behind));
    EXPECT_EQ(heard.reason, "");
    EXPECT_EQ(heard.frames, 132300);
    EXPECT_EQ(heard.standardError, "");
  }
}

TEST_F(MpegSound, OneWithoutAFrameThatCanBeDecodedIsRefusedInOurWordsAlone) {
  const Heard heard = hear(writeBytes(mFolder / "b.mp3", test::brokenMpegFrames(300)));
  EXPECT_EQ(heard.reason, "is damaged: none of it can be decoded");
  EXPECT_EQ(heard.frames, -1);
  EXPECT_EQ(heard.standardError, "");
}

TEST_F(MpegSound, FramesThatAreBrokenAreToldAndTheOthersRead) {
  const Heard heard =
      hear(writeBytes(mFolder / "b.mp3", test::brokenMpegFrames(50) + readBytes(mWhole)));
  EXPECT_EQ(heard.reason, "is damaged: parts of it cannot be decoded");
  EXPECT_GT(heard.frames, 132300);
  EXPECT_EQ(heard.standardError, "");
}

TEST_F(MpegSound, WhereNoMoreFramesAreFoundInTheMiddleItIsTold) {
  std::string bytes = readBytes(mWhole);
  bytes.replace(bytes.size() / 2, 3000, std::string(3000, 'x'));
  const Heard heard = hear(writeBytes(mFolder / "b.mp3", bytes));
  EXPECT_TRUE(heard.reason.starts_with("is damaged: ")) << heard.reason;
  EXPECT_LT(heard.frames, 132300);
  EXPECT_EQ(heard.standardError, "");
}

TEST_F(MpegSound, WhatOthersSayOnStandardErrorIsStillSaid) {
  std::string reason;
  const auto file = SoundFile::open(mWhole, reason);
  ASSERT_TRUE(file.has_value()) << reason;
  testing::internal::CaptureStderr();
  std::fputs("a line\n", stderr);
  std::fprintf(stderr, "and %s", "another");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a line\nand another");
}

}  // namespace
}  // namespace orvane
