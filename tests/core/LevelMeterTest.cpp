#include "core/LevelMeter.h"

#include <string>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

// From quiet to loud: . grey, g green, y yellow, r red.
std::string picture(std::int64_t peak, std::int64_t hold) {
  std::string text;
  for (const LevelSegment segment : levelSegments(peak, hold))
    text += ".gyr"[static_cast<int>(segment)];
  return text;
}

TEST(LevelMeter, ASegmentLightsForEveryFourDecibels) {
  const struct {
    std::int64_t low, high;
    const char *picture;
  } rows[] = {{0, 63, "........"},  {64, 67, "g......."},  {68, 71, "gg......"},
              {72, 75, "ggg....."}, {76, 79, "gggg...."},  {80, 83, "ggggg..."},
              {84, 87, "gggggg.."}, {88, 91, "ggggggg."},  {92, 95, "gggggggg"},
              {96, 99, "gggggggr"}, {100, 110, "........"}};
  for (const auto &row : rows) {
    for (std::int64_t peak = row.low; peak <= row.high; ++peak) {
      SCOPED_TRACE(peak);
      EXPECT_EQ(picture(peak, 0), row.picture);
    }
  }
}

TEST(LevelMeter, TheHoldMarkerMovesUpASegmentEveryFourDecibelsAndStaysOnTheLast) {
  const struct {
    std::int64_t low, high;
    const char *picture;
  } rows[] = {{-5, 63, "........"}, {64, 67, "y......."}, {68, 71, ".y......"},
              {72, 75, "..y....."}, {76, 79, "...y...."}, {80, 83, "....y..."},
              {84, 87, ".....y.."}, {88, 91, "......y."}, {92, 95, ".......y"},
              {96, 110, ".......r"}};
  for (const auto &row : rows) {
    for (std::int64_t hold = row.low; hold <= row.high; ++hold) {
      SCOPED_TRACE(hold);
      EXPECT_EQ(picture(0, hold), row.picture);
    }
  }
}

TEST(LevelMeter, FullScaleLightsAllSegmentsWithTheLastRed) {
  EXPECT_EQ(picture(96, 96), "gggggggr");
  EXPECT_EQ(levelText(96), "0dB");
}

TEST(LevelMeter, AMarkerAboveTheBarIsYellow) {
  EXPECT_EQ(picture(70, 90), "gg....y.");
  EXPECT_EQ(levelText(90), "-6dB");
}

TEST(LevelMeter, TheMarkerReplacesTheSegmentItSitsOn) {
  EXPECT_EQ(picture(90, 90), "ggggggy.");
}

TEST(LevelMeter, NoHoldHasNoMarkerAndReadsMinus96Decibels) {
  EXPECT_EQ(picture(70, 0), "gg......");
  EXPECT_EQ(levelText(0), "-96dB");
}

}  // namespace
}  // namespace orvane::test
