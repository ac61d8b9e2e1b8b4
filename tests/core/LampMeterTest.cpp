#include "core/LampMeter.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

// The row from flat to sharp as a picture: # lit, . unlit, G/B the centre.
std::string picture(float deviation) {
  const LampRow row = lampRow(deviation);
  std::string text;
  for (std::size_t k = 5; k-- > 0;)
    text += row.flat[k] ? '#' : '.';
  text += row.natural == CentreLamp::Green ? 'G' : row.natural == CentreLamp::Blue ? 'B' : '-';
  for (const bool lit : row.sharp)
    text += lit ? '#' : '.';
  return text;
}

TEST(LampMeter, NoDeviationLightsOnlyTheGreenCentre) {
  EXPECT_EQ(picture(0.0F), ".....G.....");
  EXPECT_EQ(picture(-0.004F), ".....G.....");
  EXPECT_EQ(picture(0.00999F), ".....G.....");
}

TEST(LampMeter, AtOneAndTwoCentsTheCentreIsGreenAndTheFirstSideLampLit) {
  EXPECT_EQ(picture(0.015F), ".....G#....");
  EXPECT_EQ(picture(0.025F), ".....G#....");
  EXPECT_EQ(picture(-0.015F), "....#G.....");
  EXPECT_EQ(picture(-0.025F), "....#G.....");
}

TEST(LampMeter, FromThreeCentsOnTheCentreIsBlue) {
  EXPECT_EQ(picture(0.035F), ".....B#....");
  EXPECT_EQ(picture(-0.035F), "....#B.....");
}

TEST(LampMeter, CentsAreCutFromTheSinglePrecisionDeviation) {
  EXPECT_EQ(wholeCents(0.02F), 1);
  EXPECT_EQ(wholeCents(0.11F), 10);
  EXPECT_EQ(picture(0.11F), ".....B#....");
  EXPECT_EQ(wholeCents(0.115F), 11);
  EXPECT_EQ(picture(0.115F), ".....B##...");
  EXPECT_EQ(wholeCents(0.00999F), 0);
  EXPECT_EQ(wholeCents(-0.005F), 0);
}

TEST(LampMeter, HalfASemitoneFlatLightsAllFiveFlatLamps) {
  EXPECT_EQ(lampRow(-0.5F).cents, -50);
  EXPECT_EQ(picture(-0.5F), "#####B.....");
}

TEST(LampMeter, TheBarGrowsAtEveryTenCentsPlusOne) {
  const struct {
    float deviation;
    const char *picture;
  } rows[] = {{0.105F, ".....B#...."},  {0.205F, ".....B##..."},  {0.215F, ".....B###.."},
              {0.305F, ".....B###.."},  {0.315F, ".....B####."},  {0.405F, ".....B####."},
              {0.415F, ".....B#####"},  {-0.105F, "....#B....."}, {-0.115F, "...##B....."},
              {-0.215F, "..###B....."}, {-0.315F, ".####B....."}, {-0.405F, ".####B....."},
              {-0.415F, "#####B....."}, {0.7F, ".....B#####"}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.deviation);
    EXPECT_EQ(picture(row.deviation), row.picture);
  }
}

TEST(LampMeter, ADeviationThatIsNoNumberOfCentsIsNeverShownInTune) {
  for (const float deviation :
       {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity(), 1e30F}) {
    EXPECT_EQ(wholeCents(deviation), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(picture(deviation), "#####B.....");
  }
}

}  // namespace
}  // namespace orvane::test
