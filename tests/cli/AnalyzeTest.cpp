#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/BrokenMpeg.h"
#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

using Json = nlohmann::ordered_json;

std::vector<Json> readings(const CommandResult &result) {
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  std::vector<Json> all;
  for (const std::string &line : result.lines())
    all.push_back(Json::parse(line));
  return all;
}

class Analyze : public testing::Test {
 protected:
  TestFolder mFolder;

  std::vector<Json> analyze(const std::string &file, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"analyze", file, "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return readings(runCommand(arguments));
  }
};

TEST_F(Analyze, AConcertPitchIsReadAsA4InEveryBlock) {
  // 1 s at 44100 Hz holds 18 whole blocks of 2405 samples.
  const auto all = analyze(mFolder.writeSound("a4.wav", sine(440.0, 44100, 1.0), 44100));
  ASSERT_EQ(all.size(), 18U);
  for (std::size_t k = 0; k < all.size(); ++k) {
    EXPECT_EQ(all[k]["block"], k);
    EXPECT_NEAR(all[k]["time"].get<double>(), (static_cast<double>(k) + 1.0) * 2405.0 / 44100.0,
                1e-12);
    EXPECT_NEAR(all[k]["detected"].get<double>(), 440.0, 1.0);
    EXPECT_EQ(all[k]["accepted"], true);
    EXPECT_EQ(all[k]["note"], "A");
    EXPECT_EQ(all[k]["accidental"], "");
    EXPECT_EQ(all[k]["octave"], "4");
    EXPECT_LE(std::abs(all[k]["cents"].get<int>()), 4);
    EXPECT_EQ(all[k]["peak"], 89);
    EXPECT_EQ(all[k]["peakHold"], 89);
  }
}

TEST_F(Analyze, AReadingHasTheseFieldsInThisOrder) {
  const auto all = analyze(mFolder.writeSound("a4.wav", sine(440.0, 44100, 0.1), 44100));
  ASSERT_EQ(all.size(), 1U);
  std::string names;
  for (const auto &field : all[0].items())
    names += field.key() + ' ';
  EXPECT_EQ(names,
            "block time detected accepted rawPeak peak peakHold frequency note accidental octave "
            "cents deviation idealFrequency difference ");
}

TEST_F(Analyze, SilenceShowsTheStartUpDisplayAtTheReferencePitch) {
  const std::string file = mFolder.writeSound("silence.wav", std::vector<float>(8000), 8000);
  const auto all = analyze(file, {"--reference-pitch", "415"});
  ASSERT_EQ(all.size(), 18U);
  EXPECT_TRUE(all[17]["detected"].is_null());
  EXPECT_EQ(all[17]["accepted"], false);
  EXPECT_EQ(all[17]["frequency"], 415);
  EXPECT_EQ(all[17]["idealFrequency"], 415);
  EXPECT_EQ(all[17]["note"], "A");
  EXPECT_EQ(all[17]["octave"], "4");
  EXPECT_EQ(all[17]["rawPeak"], 0);
  EXPECT_EQ(all[17]["peak"], 0);
  EXPECT_EQ(all[17]["peakHold"], 0);
  const auto transposed = analyze(file, {"--transpose", "+2"});
  EXPECT_EQ(transposed[0]["note"], "G");
}

TEST_F(Analyze, TheSizeOfTheCallbacksChangesNothingInAMonoRecording) {
  std::vector<float> samples = sine(196.0, 48000, 0.7, 0.4);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] *= 1.0F - static_cast<float>(i) / static_cast<float>(samples.size());
  const std::string file = mFolder.writeSound("g3.wav", samples, 48000);
  const auto expected = analyze(file);
  ASSERT_EQ(expected.size(), 12U);
  for (const char *frames : {"1", "64", "511", "2618", "20000", "1048576"})
    EXPECT_EQ(analyze(file, {"--callback-frames", frames}), expected) << frames;
}

TEST_F(Analyze, TheHeldPeakIsTheOneBeforeItsRelease) {
  // Half a block of sound, then silence: the hold is 89 until the first block that ends more than a
  // second after the first one, and 0 from the next on.
  std::vector<float> samples = sine(440.0, 8000, 0.03);
  samples.resize(8000 * 2);
  const auto all = analyze(mFolder.writeSound("hold.wav", samples, 8000));
  // A block lasts 54.5 ms; block 0 ends at 0.0545 s, block 19 at 1.09 s > 1.0545 s.
  for (std::size_t k = 0; k <= 19; ++k)
    EXPECT_EQ(all[k]["peakHold"], 89) << k;
  EXPECT_EQ(all[20]["peakHold"], 0);
  EXPECT_EQ(all[20]["peak"], 0);
}

TEST_F(Analyze, ATemperamentTonicAndReferencePitchSetTheIdealFrequency) {
  const std::string temperaments = mFolder.write(
      "t.txt", utf16("{Pythagorean = (1.0, 1.067871094, 1.125, 1.185185185, 1.265625, 1.333333333, "
                     "1.423828125, 1.5, 1.601806641, 1.6875, 1.777777778, 1.8984375);}"));
  const std::string file = mFolder.writeSound("e4.wav", sine(330.0, 44100, 0.2), 44100);
  // On D, E is the whole tone 9/8 above D4 = 440 · 2/3: 330 Hz. On C, 81/64 of 440 · 16/27: 330 Hz.
  for (const char *tonic : {"2", "D", "d", "0"}) {
    const auto all = analyze(
        file, {"--temperaments", temperaments, "--temperament", "pythagorean", "--tonic", tonic});
    EXPECT_NEAR(all.back()["idealFrequency"].get<double>(), 330.0, 1e-4) << tonic;
  }
  const auto low = analyze(file, {"--temperaments", temperaments, "--temperament", "Pythagorean",
                                  "--reference-pitch", "430"});
  EXPECT_NEAR(low.back()["idealFrequency"].get<double>(), 430.0 * 0.75, 1e-4);
}

TEST_F(Analyze, SamplesThatAreNoNumbersLeaveEveryReadingFinite) {
  std::vector<float> samples = sine(440.0, 44100, 1.0);
  const float bad[] = {std::numeric_limits<float>::quiet_NaN(),
                       std::numeric_limits<float>::infinity(),
                       -std::numeric_limits<float>::infinity(), 1e-40F, 1e30F};
  for (std::size_t i = 5; i < 20000; i += 97)
    samples[i] = bad[i % std::size(bad)];
  const auto all = analyze(mFolder.writeSound("bad.wav", samples, 44100));
  ASSERT_EQ(all.size(), 18U);
  for (const Json &reading : all) {
    for (const char *field : {"rawPeak", "frequency", "deviation", "idealFrequency", "difference"})
      EXPECT_TRUE(reading[field].is_number()) << reading;
    EXPECT_LE(reading["rawPeak"].get<double>(), 1.0);
  }
  // The last bad sample lies in block 8; the two after it are right again.
  EXPECT_NEAR(all[10]["detected"].get<double>(), 440.0, 1.0);
}

TEST_F(Analyze, AStereoRecordingOfTheSameChannelsReadsLikeItsMono) {
  const std::vector<float> mono = sine(330.0, 22050, 0.5, 0.3);
  std::vector<float> stereo;
  for (const float x : mono)
    stereo.insert(stereo.end(), {x, x});
  EXPECT_EQ(analyze(mFolder.writeSound("stereo.wav", stereo, 22050, 2)),
            analyze(mFolder.writeSound("mono.wav", mono, 22050)));
}

TEST_F(Analyze, SeveralRecordingsAreToldApartAndEachStartsAfresh) {
  const std::string a = mFolder.writeSound("a.wav", sine(440.0, 8000, 0.2), 8000);
  const std::string e = mFolder.writeSound("e.wav", sine(330.0, 8000, 0.2), 8000);
  const auto all = readings(runCommand({"analyze", a, e, "--json"}));
  ASSERT_EQ(all.size(), 6U);
  EXPECT_EQ(all[0]["file"], a);
  EXPECT_EQ(all[3]["file"], e);
  EXPECT_EQ(all[3]["block"], 0);
  EXPECT_EQ(all[5]["note"], "E");
}

TEST_F(Analyze, ARecordingThatCannotBeReadDoesNotKeepTheOthersFromBeingRead) {
  const std::string a = mFolder.writeSound("a.wav", sine(440.0, 8000, 0.2), 8000);
  const CommandResult result = runCommand({"analyze", "/no/such", a, "--json"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.lines().size(), 3U);
  EXPECT_EQ(result.errors, "orvane-cli: /no/such: no such file\n");
}

TEST_F(Analyze, AnMp3ThatCannotBeDecodedIsToldInOneLineAlsoByListen) {
  const std::string song = mFolder.write("song.mp3", brokenMpegFrames(50));
  const std::vector<std::vector<std::string>> commands = {
      {"analyze", song}, {"listen", "--input", song, "--seconds", "1"}};
  for (const auto &arguments : commands) {
    const CommandResult result = runCommand(arguments);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "orvane-cli: " + song + ": is damaged: none of it can be decoded\n");
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(Analyze, AsTextOnlyWhatChangesTheDisplayIsPrinted) {
  const CommandResult result =
      runCommand({"analyze", mFolder.writeSound("a.wav", sine(500.0, 8000, 1.0), 8000)});
  EXPECT_EQ(result.exitCode, 0);
  // 500 Hz is 16 samples exactly: one reading, 21.3 cents above B4 (493.88 Hz).
  EXPECT_EQ(result.output, "   0.054 s  B4   +21 cents   500.0Hz, ideal  493.9Hz, +6.1Hz\n");
}

TEST_F(Analyze, TheBundledRecordingIsReadAsItsThreeNotes) {
  const auto all = analyze(std::string(ORVANE_RESOURCES_DIR) + "/Recording.flac");
  ASSERT_EQ(all.size(), 82U);  // 4.5 s
  // Half a second into each of the three notes of a second and a half.
  const struct {
    std::size_t block;
    const char *note, *accidental, *octave;
  } notes[] = {{9, "F", "♯", "3"}, {37, "A", "", "3"}, {64, "F", "♯", "4"}};
  for (const auto &expected : notes) {
    EXPECT_EQ(all[expected.block]["note"], expected.note);
    EXPECT_EQ(all[expected.block]["accidental"], expected.accidental);
    EXPECT_EQ(all[expected.block]["octave"], expected.octave);
    EXPECT_LE(std::abs(all[expected.block]["cents"].get<int>()), 15);
  }
}

}  // namespace
}  // namespace orvane::test
