// The controls of the tuning, worked with the pointer and with the keys.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/cli/TestFiles.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

using OrvaneTuningTest = OrvaneTest;

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneTuningTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire), nameOf);

TEST_P(OrvaneTuningTest, TheReferencePitchIsTypedSteppedAndKeptWithinItsLimits) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  expectText(program, "mReferencePitchText", "440");
  expectTitle(program, "mTonicPopUpButton", "C (261.6Hz)");

  // 440 Hz, which is shown at the start, lies 12·log2(440/442) = -0.0785 semitones below 442.
  program.enter("mReferencePitchText", "442");
  expectText(program, "mCentText", "-7");
  expectText(program, "mIdealFrequencyText", "442.0Hz");
  expectText(program, "mFrequencyDiffText", "-2.0Hz");
  expectTitle(program, "mTonicPopUpButton", "C (262.8Hz)");
  EXPECT_EQ(bell.count(), 0);

  program.enter("mReferencePitchText", "348.9");
  expectText(program, "mReferencePitchText", "349");
  EXPECT_EQ(bell.count(), 1);
  program.enter("mReferencePitchText", "349");
  EXPECT_EQ(bell.count(), 1);
  program.enter("mReferencePitchText", "500");
  expectText(program, "mReferencePitchText", "499.9");
  EXPECT_EQ(bell.count(), 2);
  program.enter("mReferencePitchText", "500");
  expectText(program, "mReferencePitchText", "499.9");
  EXPECT_EQ(bell.count(), 3);
  program.enter("mReferencePitchText", "499.9");
  EXPECT_EQ(bell.count(), 3);
  program.enter("mReferencePitchText", "abc");
  expectText(program, "mReferencePitchText", "349");
  EXPECT_EQ(bell.count(), 4);
  keepPicture("reference-349");

  // Leaving the field ends the editing too.
  program.click("mReferencePitchText");
  input.key("Ctrl+A");
  input.type("415");
  input.key("Tab");
  expectText(program, "mIdealFrequencyText", "439.7Hz");  // 415 × 2^(1/12): A sharp by now
  const QRect stepper = program.place("mReferencePitchStepper");
  input.click({stepper.center().x(), stepper.top() + stepper.height() / 4});
  expectText(program, "mReferencePitchText", "416");
  input.click({stepper.center().x(), stepper.bottom() - stepper.height() / 4});
  expectText(program, "mReferencePitchText", "415");
  input.key("Up");
  input.key("Up");
  expectText(program, "mReferencePitchText", "417");
  input.key("Down");
  expectText(program, "mReferencePitchText", "416");
  EXPECT_EQ(bell.count(), 4);
  keepPicture("reference-416");
}

TEST_P(OrvaneTuningTest, ThePopUpsAreChosenFromWithThePointer) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  EXPECT_FALSE(program.object("mTonicPopUpButton").is(AccessibleState::kEnabled));
  EXPECT_FALSE(program.object("mTransposeText").is(AccessibleState::kShowing));
  mic.play(440.0);

  // A pure scale from C has A at 5/3: C = 440 × 3/5.
  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Just intonation (Ellis duodene)"));
  expectTitle(program, "mTuningPopUpButton", "Just intonation (Ellis duodene)");
  expectTitle(program, "mTonicPopUpButton", "C (264.0Hz)");
  EXPECT_TRUE(program.object("mTonicPopUpButton").is(AccessibleState::kEnabled));
  // From G, A is at 9/8: G = 440 × 8/9.
  ASSERT_TRUE(program.choose("mTonicPopUpButton", "G (396.0Hz)"));
  expectTitle(program, "mTonicPopUpButton", "G (391.1Hz)");
  expectText(program, "mCentText", "±0");

  const std::vector<std::string> transpositions = program.titles("mTransposePopUpButton");
  ASSERT_EQ(transpositions.size(), 23U);
  ASSERT_TRUE(program.choose("mTransposePopUpButton", transpositions[11 + 2]));
  expectText(program, "mTransposeText", "C = D (+2)");
  EXPECT_TRUE(program.object("mTransposeText").is(AccessibleState::kShowing));
  expectNote(program, "G4");
  expectText(program, "mCentText", "±0");
  keepPicture("just-from-g-transposed");

  ASSERT_TRUE(program.choose("mTransposePopUpButton", transpositions[11 - 2]));
  expectText(program, "mTransposeText", "C = A#/Bb (-2)");
  expectNote(program, "B4");
  ASSERT_TRUE(program.choose("mTransposePopUpButton", transpositions[11]));
  expectNote(program, "A4");
  EXPECT_FALSE(program.object("mTransposeText").is(AccessibleState::kShowing));
  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Equal temperament"));
  expectTitle(program, "mTonicPopUpButton", "G (392.0Hz)");
  EXPECT_FALSE(program.object("mTonicPopUpButton").is(AccessibleState::kEnabled));
}

TEST_P(OrvaneTuningTest, ThePopUpsAreReachedAndTurnedWithTheKeys) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  const std::vector<std::string> temperaments = program.titles("mTuningPopUpButton");
  ASSERT_GT(temperaments.size(), 3U);
  program.click("mReferencePitchText");
  const auto hasFocus = [&](const std::string &control) {
    return eventually([&] { return program.object(control).is(AccessibleState::kFocused); },
                      kPatience);
  };
  ASSERT_TRUE(hasFocus("mReferencePitchText"));
  input.key("Tab");
  ASSERT_TRUE(hasFocus("mReferencePitchStepper"));
  input.key("Tab");
  ASSERT_TRUE(hasFocus("mTuningPopUpButton"));
  // Past the divider.
  input.key("Down");
  expectTitle(program, "mTuningPopUpButton", temperaments[2]);
  input.key("Tab");
  ASSERT_TRUE(hasFocus("mTonicPopUpButton"));
  input.key("Down");
  EXPECT_TRUE(eventually([&] { return program.title("mTonicPopUpButton").starts_with("C#/Db ("); },
                         kPatience))
      << program.title("mTonicPopUpButton");
  input.key("Tab");
  ASSERT_TRUE(hasFocus("mTransposePopUpButton"));
  keepPicture("focus-on-transposition");
  for (int step = 0; step < 3; ++step)
    input.key("Up");
  expectText(program, "mTransposeText", "C = A (-3)");
  expectNote(program, "C5");
  input.key("Shift+Tab");
  ASSERT_TRUE(hasFocus("mTonicPopUpButton"));
}

TEST_P(OrvaneTuningTest, TemperamentsOfTheUsersOwnTakeThePlaceOfTheShippedOnes) {
  const auto folder = desktop.configurationFolder().parent_path() / ".local/share/velmora/Orvane";
  const auto own = folder / "Temperaments.txt";
  std::filesystem::create_directories(folder);
  const auto write = [](const std::filesystem::path &file, const std::string &bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
  };
  const std::string list = " = (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}";
  // What stands behind equal temperament and the divider, and what the program had to say.
  const auto expectTemperament = [&](const std::vector<std::string> &arguments,
                                     const std::string &name, const std::string &error) {
    OrvaneProgram program(desktop, tree, arguments);
    ASSERT_TRUE(program.opens()) << program.standardError();
    const std::vector<std::string> titles = program.titles("mTuningPopUpButton");
    ASSERT_EQ(titles.size(), 3U);
    EXPECT_EQ(titles[2], name);
    EXPECT_NE(program.standardError().find(error), std::string::npos) << program.standardError();
    ASSERT_TRUE(program.chooseMenu("Orvane", "Quit"));
    EXPECT_EQ(program.wait(), 0);
  };

  write(own, utf16("{Mine" + list));
  expectTemperament({}, "Mine", "");
  write(desktop.folder() / "named.txt", utf16("{Named" + list));
  expectTemperament({"--temperaments", (desktop.folder() / "named.txt").string()}, "Named", "");
  write(own, utf16("{Mine = (0;}"));
  expectTemperament({}, "Pythagorean",
                    "orvane: failed to read Temperaments.txt. error: " + own.string() +
                        ": line 1, column 11: expected ',' or ')'\n");
}

}  // namespace
}  // namespace orvane::test
