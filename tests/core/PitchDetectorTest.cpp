#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "core/PitchDetector.h"

namespace orvane::test {
namespace {

struct Detector {
  BlockQueue queue{nullptr};
  CaptureBuffer capture{queue};
  PitchDetector detector{capture};

  explicit Detector(float rate = 44100.0F, UInt32 frames = 2405) {
    capture.mSampleRate = rate;
    capture.mBufferFrames = frames;
  }
  bool detect(const std::vector<float> &samples) {
    return detector.detectPitch(
        CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float)));
  }
  float average(std::vector<std::uint64_t> spacings) {
    return detector.averageDiffs(spacings.data(), spacings.size());
  }
};

std::vector<float> sine(double hertz, double rate, std::size_t count, double amplitude) {
  std::vector<float> samples(count);
  for (std::size_t i = 0; i < count; ++i)
    samples[i] = static_cast<float>(
        amplitude * std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate));
  return samples;
}

// A block with positive peaks at the given places and heights, one sample of −depth between them.
std::vector<float> pulses(const std::vector<std::pair<std::size_t, float>> &peaks,
                          std::size_t count, float depth = 0.25F) {
  std::vector<float> samples(count, -depth);
  for (const auto &[place, height] : peaks)
    samples[place] = height;
  return samples;
}

TEST(PitchDetector, DigitalSilenceHasLevelZeroAndNoFrequency) {
  Detector d;
  d.detector.mRawFrequency = 123.0F;
  d.detector.mRawPeak = 1.0F;
  d.detector.mPeak = 50;
  EXPECT_FALSE(d.detect(std::vector<float>(2405, 0.0F)));
  EXPECT_EQ(d.detector.mPeak, 0);
  EXPECT_EQ(d.detector.mRawPeak, 0.0F);
  EXPECT_EQ(d.detector.mRawFrequency, 123.0F) << "kept from the block before";
}

TEST(PitchDetector, AnEmptyBlockIsSilent) {
  Detector d;
  EXPECT_FALSE(d.detector.detectPitch(CaptureBlock()));
  const char bytes[3] = {1, 2, 3};
  EXPECT_FALSE(d.detector.detectPitch(CaptureBlock::withBytes(bytes, 3)));
  EXPECT_EQ(d.detector.mPeak, 0);
  EXPECT_EQ(d.detector.mRawPeak, 0.0F);
}

TEST(PitchDetector, TheConcertPitchIsReadFromPeaksAHundredSamplesApart) {
  Detector d;
  EXPECT_TRUE(d.detect(sine(440.0, 44100.0, 2405, 0.5)));
  EXPECT_NEAR(d.detector.mRawFrequency, 440.0F, 0.5F);
}

TEST(PitchDetector, APeakOfOneHundredthOrLessGivesALevelButNoFrequency) {
  Detector d;
  // 0.01 in single precision is 0.00999999977648…, which is not above the double 0.01.
  std::vector<float> samples =
      pulses({{100, 0.01F}, {200, 0.01F}, {300, 0.01F}, {400, 0.01F}, {500, 0.01F}, {600, 0.01F}},
             700, 0.005F);
  EXPECT_FALSE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawPeak, 0.01F);
  EXPECT_EQ(d.detector.mPeak, 55);  // q = 655; 20·log10(655/65535) = −40.0047…
  for (float &sample : samples)
    sample = sample > 0.0F ? std::nextafter(0.01F, 1.0F) : sample;
  EXPECT_TRUE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawFrequency, 441.0F);
}

TEST(PitchDetector, TheLevelIsQuantisedAsASixteenBitSampleAndCutToWholeDecibels) {
  const struct {
    float peak;
    std::int64_t level;
  } rows[] = {
      {1.0F, 96},            // full scale
      {0.5F, 89},            // q = 32767, 89.98
      {1.0F / 65536.0F, 0},  // q = 0
      {1.6e-5F, 0},          // q = 1: 96 − 96.33 = −0.33, cut toward zero
      {3.1e-5F, 5},          // q = 2: 96 − 90.31 = 5.69
      {0.1F, 75},            // q = 6553: 75.999
      {0x1.99ap-4F, 75},     // q = 6553 of 6553.9: 75.9993
      {0.70710677F, 92},     // q = 46340: 92.99
      {0x1.c85362p-1F, 94},  // q = 58408 of 58408.8: 94.99998
      {0x1.c854c8p-1F, 95},  // q = 58409: 95.0001
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.peak);
    Detector d;
    d.detect({0.0F, -row.peak, 0.0F});
    EXPECT_EQ(d.detector.mRawPeak, row.peak);
    EXPECT_EQ(d.detector.mPeak, row.level);
  }
}

TEST(PitchDetector, APositivePeakReachesTheLevelOnlyThroughAnAcceptedPeak) {
  Detector d;
  d.detect({-0.125F, 0.75F, 0.75F});  // still open at the end
  EXPECT_EQ(d.detector.mRawPeak, 0.125F);
  d.detect({-0.125F, 0.75F, -0.125F});
  EXPECT_EQ(d.detector.mRawPeak, 0.75F);
}

TEST(PitchDetector, APeakAtTheFirstSampleCountsAsNoPeakButRaisesTheThreshold) {
  Detector d;
  d.detect({0.75F, -0.125F, 0.5F, -0.125F});
  EXPECT_EQ(d.detector.mRawPeak, 0.125F) << "0.5 falls short of the threshold 0.75";
}

TEST(PitchDetector, OfEqualSamplesTheLaterOneIsThePeak) {
  Detector d(1000.0F, 99);
  // Peaks at 11 (the later of 10 and 11), 111, 211, 311, 411: distances of 100.
  std::vector<float> samples(500, -0.5F);
  samples[10] = samples[11] = 0.5F;
  for (const std::size_t place : {111U, 211U, 311U, 411U})
    samples[place] = 0.5F;
  EXPECT_TRUE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawFrequency, 10.0F);
}

TEST(PitchDetector, AZeroEndsAHalfWave) {
  // Peaks 100 apart, each with a zero and an equal sample behind it: 2 peaks a period, so that the
  // spacings are 2 and 98, and the larger one counts.
  std::vector<float> samples(2405, -0.25F);
  for (std::size_t place = 50; place < 2400; place += 100) {
    samples[place] = samples[place + 2] = 0.5F;
    samples[place + 1] = 0.0F;
  }
  Detector d;
  // Of 48 spacings 23 are 98 and 24 are 2: no majority.
  EXPECT_FALSE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawPeak, 0.5F);
}

TEST(PitchDetector, TheFirstPeakMayBeAsSmallAsItLikes) {
  // Two spacings that count would be 950 and 850 without the first.
  Detector d;
  EXPECT_TRUE(d.detect(pulses({{100, 0.0005F}, {1000, 0.5F}, {1850, 0.5F}}, 2405)));
  EXPECT_EQ(d.detector.mRawFrequency, 49.0F);  // 44100 / 900
}

TEST(PitchDetector, NotANumberEndsAHalfWaveAndAddsNothingToTheLevel) {
  Detector d(1000.0F, 99);
  std::vector<float> samples =
      pulses({{10, 0.5F}, {110, 0.5F}, {210, 0.5F}, {310, 0.5F}, {410, 0.5F}}, 500, 0.0F);
  for (const std::size_t place : {11U, 111U, 211U, 311U, 411U})
    samples[place] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawFrequency, 10.0F);
  EXPECT_EQ(d.detector.mRawPeak, 0.5F);
}

TEST(PitchDetector, AHalfWaveBelowNineTenthsOfTheLastPeakYieldsNone) {
  Detector d(1000.0F, 99);
  // 0.9 of 1.0 in single precision is 0.9f itself; the sample just below it falls short.
  const float below = std::nextafter(0.9F, 0.0F);
  EXPECT_FALSE(d.detect(pulses({{100, 1.0F}, {200, below}, {300, below}, {400, below}}, 500)));
  // Two accepted peaks: the first at 100, the second 300 later.
  EXPECT_TRUE(d.detect(pulses({{100, 1.0F}, {200, below}, {300, below}, {400, 0.9F}}, 500)));
  EXPECT_EQ(d.detector.mRawFrequency, 1000.0F / 300.0F);
}

TEST(PitchDetector, TheThresholdDecaysInDoublePrecision) {
  Detector d(1000.0F, 99);
  // 0.8f is 0.800000011920929; nine tenths of it, 0.7200000107…, lie nearest to 0.72000003f among
  // single-precision values. 0.9f times 0.8f in single precision would give the one below.
  EXPECT_FALSE(d.detect(pulses({{100, 0.8F}, {200, 0.71999997F}}, 300)));
  EXPECT_FALSE(d.detect(pulses({{100, 0.8F}, {300, 0.71999997F}, {400, 0.71999997F}}, 500)));
  EXPECT_TRUE(d.detect(pulses({{100, 0.8F}, {300, 0.72000003F}}, 500)));
}

TEST(PitchDetector, ADecayingNoteStopsGivingSpacingsForTheRestOfTheBlock) {
  Detector d(1000.0F, 99);
  // After 1.0 at 400 nothing reaches 0.9 any more, so only 100, 100, 100, 100 are measured.
  std::vector<std::pair<std::size_t, float>> peaks = {
      {100, 1.0F}, {200, 1.0F}, {300, 1.0F}, {400, 1.0F}, {457, 0.8F}, {501, 0.7F}, {533, 0.6F}};
  EXPECT_TRUE(d.detect(pulses(peaks, 600)));
  EXPECT_EQ(d.detector.mRawFrequency, 10.0F);
}

TEST(PitchDetector, TheScanEndsAtTheHundredAndTwentyEighthSpacing) {
  Detector d(1000.0F, 99);
  std::vector<float> samples;
  for (int k = 0; k < 128; ++k)
    samples.insert(samples.end(), {-0.25F, -0.25F, -0.25F, 0.5F});
  samples.push_back(-0.75F);  // closes the 128th half-wave; its magnitude is not looked at
  samples.insert(samples.end(), {-1.0F, 1.0F, -1.0F});
  EXPECT_TRUE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawPeak, 0.5F);
  // The first spacing is 3 (the place of the first peak), the other 127 are 4; the window around 4
  // reaches down to 3.8, cut to 3, so all count: (3 + 508) / 128 = 3.9921875.
  EXPECT_EQ(d.detector.mRawFrequency, 1000.0F / 3.9921875F);
}

TEST(PitchDetector, AHundredAndTwentySevenSpacingsDoNotEndTheScan) {
  Detector d(1000.0F, 99);
  std::vector<float> samples;
  for (int k = 0; k < 127; ++k)
    samples.insert(samples.end(), {-0.25F, -0.25F, -0.25F, 0.5F});
  samples.push_back(-0.75F);
  EXPECT_TRUE(d.detect(samples));
  EXPECT_EQ(d.detector.mRawPeak, 0.75F);
}

TEST(PitchDetector, FewerThanTwoSpacingsGiveNoPitch) {
  Detector d;
  EXPECT_EQ(d.average({}), 0.0F);
  EXPECT_EQ(d.average({900}), 0.0F);
}

TEST(PitchDetector, OfTwoOrThreeSpacingsTheSecondAloneDecides) {
  Detector d;  // a block of 2405 samples, a third of it 801
  EXPECT_EQ(d.average({100, 801}), 0.0F);
  EXPECT_EQ(d.average({100, 802}), 802.0F);
  EXPECT_EQ(d.average({5000, 801, 2000}), 0.0F);
  EXPECT_EQ(d.average({3, 802, 1}), 802.0F);
  std::uint64_t spacings[] = {900, 850, 1};
  d.detector.averageDiffs(spacings, 3);
  EXPECT_EQ(spacings[0], 900U) << "three spacings are not sorted";
}

TEST(PitchDetector, TheLowestNoteIsReadFromTheOnlyDistanceInItsBlock) {
  Detector d;
  // Begun a fifth of a period late, so that two half-waves close within the block: peaks near 80
  // and 1684.
  const std::vector<float> late = sine(27.5, 44100.0, 2405 + 321, 0.5);
  const std::vector<float> samples(late.begin() + 321, late.end());
  EXPECT_TRUE(d.detect(samples));
  EXPECT_NEAR(d.detector.mRawFrequency, 27.5F, 0.05F);
}

TEST(PitchDetector, FourDifferentSpacingsGiveNoPitch) {
  Detector d;
  EXPECT_EQ(d.average({10, 20, 30, 40}), 0.0F);
}

TEST(PitchDetector, OfTwoEquallyCommonSpacingsTheSmallerIsTheReference) {
  Detector d;
  EXPECT_EQ(d.average({5, 100, 100, 101, 101}), 100.5F);
  // Around 100 the window ends at 105, so 106 stays outside; around 106 it begins at 100.
  EXPECT_EQ(d.average({5, 100, 100, 106, 106}), 0.0F);
  EXPECT_EQ(d.average({95, 96, 100, 100, 106, 106}), 97.75F);
}

TEST(PitchDetector, WhenTheSmallestSpacingIsTheMostCommonTheLargestIsTheReference) {
  Detector d;
  // Reference 20: window 19 to 21 holds one of five.
  EXPECT_EQ(d.average({10, 10, 10, 10, 20}), 0.0F);
  // Reference 101: window 95 to 106 holds all.
  EXPECT_EQ(d.average({100, 100, 100, 101}), 100.25F);
  // All alike: the smallest is the largest.
  EXPECT_EQ(d.average({100, 100, 100, 100}), 100.0F);
}

TEST(PitchDetector, TheWindowIsCutBelowAndRoundedAbove) {
  Detector d;
  // Reference 50: low 47 (47.5 cut), high 53 (52.5 + 0.5 = 53).
  EXPECT_EQ(d.average({1, 47, 50, 50, 50, 53}), 50.0F);  // (47 + 150 + 53) / 5
  EXPECT_EQ(d.average({1, 46, 50, 50, 50, 54}), 0.0F);   // 3 of 6 are no majority
  EXPECT_EQ(d.average({1, 46, 50, 50, 50, 50, 54}), 50.0F);
  // Reference 30: 28.5 is cut to 28, 31.5 + 0.5 is 32.
  EXPECT_EQ(d.average({1, 28, 30, 30, 30, 32}), 30.0F);
  // Reference 119: 113.05 is cut to 113, so 113 counts and 112 does not: 470 / 4.
  EXPECT_EQ(d.average({50, 112, 113, 119, 119, 119}), 117.5F);
}

TEST(PitchDetector, SpacingsMayComeInAnyOrder) {
  Detector d;
  EXPECT_EQ(d.average({101, 5, 100, 101, 100}), 100.5F);
  EXPECT_EQ(d.average({50, 100, 101, 100, 300, 100, 300}), 100.25F);  // (3·100 + 101) / 4
  EXPECT_EQ(d.average({53, 50, 1, 50, 47, 50}), 50.0F);
}

TEST(PitchDetector, WithoutAnyRepeatTheLargestSpacingIsTheReference) {
  Detector d;
  // 105 takes 99 to 110: 309 / 3. From any other of them 96 would count too, or 105 would not.
  EXPECT_EQ(d.average({96, 100, 104, 105}), 103.0F);
}

TEST(PitchDetector, MoreThanHalfOfTheSpacingsMustLieInTheWindow) {
  Detector d;
  EXPECT_EQ(d.average({1, 2, 100, 100}), 0.0F);          // 2 of 4
  EXPECT_EQ(d.average({1, 2, 100, 100, 100}), 100.0F);   // 3 of 5
  EXPECT_EQ(d.average({1, 2, 3, 100, 100, 101}), 0.0F);  // 3 of 6
}

}  // namespace
}  // namespace orvane::test
