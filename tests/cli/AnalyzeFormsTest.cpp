// The forms of readings beside JSON, and the summary.
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char *kHeader =
    "block,time,detected,accepted,rawPeak,peak,peakHold,frequency,note,accidental,octave,cents,"
    "deviation,idealFrequency,difference";

class AnalyzeForms : public testing::Test {
 protected:
  TestFolder mFolder;
  // 500 Hz is 16 samples exactly, 21.3 cents above B4 (493.88 Hz); a block is 436 samples.
  std::string mTone = mFolder.writeSound("b4.wav", sine(500.0, 8000, 0.2), 8000);
  std::string mSilence = mFolder.writeSound("s.wav", std::vector<float>(1000), 8000);
};

TEST_F(AnalyzeForms, AHeaderNamesTheFieldsAndALineHoldsThemOfEachReading) {
  const CommandResult result = runCommand({"analyze", mSilence, "--csv"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  // As near to no deviation as single precision comes.
  EXPECT_EQ(result.output, std::string(kHeader) +
                               "\n"
                               "0,0.0545,,false,0,0,0,440,A,,4,0,-1.9073486e-06,440,0\n"
                               "1,0.109,,false,0,0,0,440,A,,4,0,-1.9073486e-06,440,0\n");
}

TEST_F(AnalyzeForms, TheFieldsAreThoseOfJsonToTheDigit) {
  const std::string recording = std::string(ORVANE_RESOURCES_DIR) + "/Recording.flac";
  const auto lines = runCommand({"analyze", recording, "--csv"}).lines();
  const auto objects = runCommand({"analyze", recording, "--json"}).lines();
  ASSERT_EQ(lines.size(), objects.size() + 1);
  ASSERT_EQ(objects.size(), 82U);
  for (std::size_t k = 0; k < objects.size(); ++k) {
    // Without what makes it JSON, an object of these readings is its line.
    std::string line = lines[0] + '\n';
    std::string values;
    for (std::size_t at = 1; at < objects[k].size();) {
      const std::size_t colon = objects[k].find("\":", at);
      const std::size_t end = objects[k].find_first_of(",}", colon);
      std::string value = objects[k].substr(colon + 2, end - colon - 2);
      if (value == "null")
        value.clear();
      else if (value.starts_with('"'))
        value = value.substr(1, value.size() - 2);
      values += (values.empty() ? "" : ",") + value;
      at = end + 1;
    }
    EXPECT_EQ(lines[k + 1], values);
  }
}

TEST_F(AnalyzeForms, SeveralRecordingsHaveOneHeaderAndAreNamedFirstInQuotesWhereNeeded) {
  const std::string odd = mFolder.writeSound("a,\"b\"\n\xff.wav", std::vector<float>(436), 8000);
  const CommandResult result = runCommand({"analyze", mTone, odd, "--csv"});
  EXPECT_EQ(result.exitCode, 0);
  const std::vector<std::string> lines = result.lines();
  ASSERT_EQ(lines.size(), 6U);  // a header, 3 blocks, 1 block over two lines
  EXPECT_EQ(lines[0], std::string("file,") + kHeader);
  EXPECT_TRUE(lines[1].starts_with(mTone + ",0,0.0545,500,true,0.5,")) << lines[1];
  EXPECT_EQ(lines[4], '"' + mFolder.path("a,\"\"b\"\""));
  EXPECT_EQ(lines[5], "\uFFFD.wav\",0,0.0545,,false,0,0,0,440,A,,4,0,-1.9073486e-06,440,0");
}

TEST_F(AnalyzeForms, ListeningGivesTheHeaderAndTheSameFields) {
  const CommandResult result =
      runCommand({"listen", "--csv", "--input", mTone, "--seconds", "0.5"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  const std::vector<std::string> lines = result.lines();
  ASSERT_GT(lines.size(), 2U);
  EXPECT_EQ(lines[0], kHeader);
  EXPECT_TRUE(lines[1].starts_with("0,0.")) << lines[1];
  EXPECT_TRUE(lines[2].starts_with("1,0.")) << lines[2];
  EXPECT_EQ(std::count(lines[1].begin(), lines[1].end(), ','), 14);
}

TEST_F(AnalyzeForms, FormsThatExcludeEachOtherAreRefused) {
  const struct {
    std::vector<std::string> arguments;
    const char *errors;
  } rows[] = {
      {{"analyze", mTone, "--csv", "--json"}, "orvane-cli: usage: --json excludes --csv\n"},
      {{"listen", "--json", "--csv"}, "orvane-cli: usage: --json excludes --csv\n"},
      {{"analyze", mTone, "--csv", "--summary"}, "orvane-cli: usage: --csv excludes --summary\n"},
  };
  for (const auto &row : rows) {
    const CommandResult result = runCommand(row.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, row.errors);
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(AnalyzeForms, ASummaryFollowsTheReadings) {
  const CommandResult result = runCommand({"analyze", mTone, "--summary"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output,
            "   0.054 s  B4   +21 cents   500.0Hz, ideal  493.9Hz, +6.1Hz\n"
            "Summary:\n"
            "  B4          3 readings, median +21.0 cents, quartiles     0 cents apart\n"
            "  drift ±0.00 cents per minute\n");
}

TEST_F(AnalyzeForms, ASummaryOfOneReadingHasNoDriftAndOneOfNoneHasNothing) {
  const std::string one = mFolder.writeSound("one.wav", sine(500.0, 8000, 0.06), 8000);
  EXPECT_EQ(runCommand({"analyze", one, "--summary", "--json"}).lines().at(1),
            "{\"summary\":{\"notes\":[{\"note\":\"B\",\"accidental\":\"\",\"octave\":\"4\","
            "\"readings\":1,\"median\":21,\"interquartileRange\":0}],\"drift\":null}}");
  EXPECT_EQ(runCommand({"analyze", one, "--summary"}).lines().back(),
            "  B4          1 reading,  median +21.0 cents, quartiles     0 cents apart");
  EXPECT_EQ(runCommand({"analyze", mSilence, "--summary"}).output, "Summary: no note was heard\n");
  EXPECT_EQ(runCommand({"analyze", mSilence, "--summary", "--json"}).lines().back(),
            "{\"summary\":{\"notes\":[],\"drift\":null}}");
}

// 4000 Hz is accepted, but three notes above C8 where A4 is 349 Hz.
TEST_F(AnalyzeForms, ANoteBeyondThoseThatAreNamedIsNotTakenForTheOneShownBefore) {
  const std::string high = mFolder.writeSound("high.wav", sine(4000.0, 48000, 0.5), 48000);
  const std::vector<std::string> low{"--reference-pitch", "349"};
  const Json reading =
      Json::parse(runCommand({"analyze", high, "--json", low[0], low[1]}).lines().at(0));
  EXPECT_EQ(reading["accepted"], true);
  EXPECT_EQ(reading["frequency"], 4000.0);
  EXPECT_EQ(reading["idealFrequency"], 349.0);
  const std::string plot = mFolder.path("high.svg");
  EXPECT_EQ(runCommand({"analyze", high, "--summary", "--plot", plot, low[0], low[1]}).output,
            "Summary: no note was heard\n");
  std::ifstream drawing(plot);
  const std::string svg{std::istreambuf_iterator<char>(drawing), {}};
  EXPECT_NE(svg.find("</svg>"), std::string::npos);
  EXPECT_EQ(svg.find("class=\"line\""), std::string::npos);
  EXPECT_EQ(runCommand({"listen", "--input", high, "--seconds", "0.3", low[0], low[1]}).output, "");
}

TEST_F(AnalyzeForms, EachOfSeveralRecordingsHasItsOwnSummary) {
  const CommandResult result =
      runCommand({"analyze", mTone, "/no/such", mSilence, "--summary", "--json"});
  EXPECT_EQ(result.exitCode, 1);
  const std::vector<std::string> lines = result.lines();
  ASSERT_EQ(lines.size(), 7U);
  const Json tone = Json::parse(lines[3]);
  EXPECT_EQ(tone["file"], mTone);
  EXPECT_EQ(tone["summary"]["notes"][0]["readings"], 3);
  const Json silence = Json::parse(lines[6]);
  EXPECT_EQ(silence["file"], mSilence);
  EXPECT_TRUE(silence["summary"]["notes"].empty());
}

}  // namespace
}  // namespace orvane::test
