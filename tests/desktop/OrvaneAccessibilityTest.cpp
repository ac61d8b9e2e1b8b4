// What assistive programs find of the windows, against what a person sees in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>

#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using Lines = std::vector<std::string>;

// Its role, its name, and its number or text if it has one.
std::string inWords(const Accessible &object) {
  std::ostringstream words;
  words << object.role() << " [" << object.name() << "]";
  if (const auto value = object.value())
    words << " = " << *value;
  else if (const std::string text = object.text(); !text.empty())
    words << " = " << text;
  return words.str();
}

class OrvaneAccessibilityTest : public OrvaneTest {
 protected:
  void SetUp() override {
    OrvaneTest::SetUp();
    program.emplace(desktop, tree);  // which wants a device to be there
    ASSERT_TRUE(program->opens()) << program->standardError();
  }

  Accessible needle() const {
    return program->application().findNamed("Needle meter in cents", "indicator");
  }

  // Counted as a person would, by their colour.
  int redLamps(const std::string &side) const {
    int count = 0;
    for (int k = 0; k < 5; ++k)
      count += lamp(*program, "m" + side + std::to_string(k)) == Light::kRed ? 1 : 0;
    return count;
  }

  std::optional<OrvaneProgram> program;
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneAccessibilityTest, testing::Values(Kind::kPulseAudio),
                         nameOf);

TEST_P(OrvaneAccessibilityTest, EveryControlHasANameAndItsValueAndNothingElseIsThere) {
  Lines found;
  for (const Accessible &control : program->controls())
    found.push_back(inWords(control));
  EXPECT_EQ(found, (Lines{
                       "text [Sound of a written C]",
                       "text [Note] = A 4",
                       "text [Deviation in cents] = ±0",
                       "label [cents] = cents",
                       "indicator [Tuning lamps in cents] = 0",
                       "check box [Details]",
                       "label [Details] = Details",
                       "label [Measured] = Measured",
                       "text [Measured frequency] = 440.0Hz",
                       "label [Ideal] = Ideal",
                       "text [Ideal frequency] = 440.0Hz",
                       "label [Difference] = Difference",
                       "text [Difference from the ideal frequency] = ±0.0Hz",
                       "label [Level] = Level",
                       "indicator [Input level in decibels] = -96",
                       "text [Input peak level] = -96dB",
                       "label [Reference pitch:] = Reference pitch:",
                       "text [Reference pitch in hertz] = 440",
                       "spin box [Reference pitch stepper] = 440",
                       "label [Hz] = Hz",
                       "label [Temperament:] = Temperament:",
                       "combo box [Temperament] = Equal temperament",
                       "label [Tonic:] = Tonic:",
                       "combo box [Tonic] = C (261.6Hz)",
                       "label [Transposition:] = Transposition:",
                       "combo box [Transposition] = Off (concert pitch)",
                       "label [Input device:] = Input device:",
                       "combo box [Input device] = " + program->title("mInputDevicePopUpButton"),
                       "label [Input volume:] = Input volume:",
                       "slider [Input volume] = 100",
                       "text [Input volume in percent] = 100",
                       "push button [Sound Settings…]",
                   }));
  EXPECT_EQ(inWords(needle()), "indicator [Needle meter in cents] = 0");
  EXPECT_TRUE(program->object("mDisclosureButton").is(AccessibleState::kChecked));
}

TEST_P(OrvaneAccessibilityTest, EveryLabelTellsWhatItIsTheLabelOf) {
  for (const Accessible &control : program->controls()) {
    const std::size_t targets = control.related(AccessibleRelation::kLabelFor).size();
    EXPECT_EQ(targets, control.role() == "label" ? 1U : 0U) << control.name();
  }
  const auto named =
      program->object("mTonicPopUpButtonLabel").related(AccessibleRelation::kLabelFor);
  ASSERT_EQ(named.size(), 1U);
  EXPECT_EQ(named.front().name(), "Tonic");
}

TEST_P(OrvaneAccessibilityTest, APlayedNoteIsReadAsItIsSeen) {
  // 1200·log2(446/440) = 23.4 cents.
  mic.play(446.0);
  EXPECT_TRUE(eventually(
      [this] {
        const double cents = program->value("mLampMeter").value_or(0.0);
        return cents >= 22.0 && cents <= 24.0;
      },
      kPatience));
  EXPECT_EQ(program->object("mLampMeter").description(), "Out of tune");
  expectText(*program, "mNoteText", "A 4");
  EXPECT_EQ(redLamps("Sharp"), 3);
  EXPECT_EQ(redLamps("Flat"), 0);
  EXPECT_EQ(lamp(*program, "mNatural"), Light::kBlue);
  keepPicture("accessible-sharp-note");
  EXPECT_TRUE(eventually([this] {
    std::ostringstream cents;
    cents << std::showpos << program->value("mLampMeter").value_or(0.0);
    return program->text("mCentText") == cents.str() &&
           needle().value() == program->value("mLampMeter");
  }));

  // The loudest moment of four partials of 0.3, 0.1, 0.06 and 0.03 lies below -6 dB; the bar has a
  // lamp for every 4 dB from -32.
  const double level = program->value("mLevelMeter").value_or(0.0);
  EXPECT_GT(level, -11.0);
  EXPECT_LT(level, -6.0);
  EXPECT_NE(lamp(*program, "mLevel5"), Light::kGray);
  EXPECT_EQ(lamp(*program, "mLevel7"), Light::kGray);

  mic.play(369.99);
  expectText(*program, "mNoteText", "F sharp 4");
  expectText(*program, "mFrequencyText", "370.0Hz");
  EXPECT_TRUE(eventually(
      [this] { return program->object("mLampMeter").description() == "In tune"; }, kPatience));
  EXPECT_EQ(lamp(*program, "mNatural"), Light::kGreen);
  keepPicture("accessible-sharp-key");
  mic.play(233.08);
  expectText(*program, "mNoteText", "B flat 3");

  mic.rest();
  EXPECT_TRUE(eventually(
      [this] { return program->object("mLampMeter").description() == "No note is heard"; },
      kPatience));
  EXPECT_TRUE(eventually([this] { return lamp(*program, "mNatural") == Light::kGray; }, kPatience));
  EXPECT_EQ(program->value("mLevelMeter"), -96.0);
  EXPECT_EQ(program->text("mNoteText"), "B flat 3");
}

TEST_P(OrvaneAccessibilityTest, OnlyChangesAreToldAndNothingIsAnnounced) {
  using std::chrono::seconds;
  mic.play(440.0);
  expectText(*program, "mFrequencyText", "440.0Hz");
  tree.eventsWithin(seconds(2));
  mic.play(392.0);
  const Lines changes = tree.eventsWithin(seconds(3));
  EXPECT_GT(std::ranges::count(changes, "PropertyChange accessible-value"), 0);
  EXPECT_GT(std::ranges::count(changes, "TextChanged insert"), 0);
  EXPECT_EQ(std::ranges::count(changes, "Announcement"), 0);
  EXPECT_EQ(std::ranges::count(changes, "StateChanged focused"), 0);
  expectNote(*program, "G4");
  mic.rest();
  tree.eventsWithin(seconds(6));
  EXPECT_EQ(tree.eventsWithin(seconds(2)), Lines());
}

TEST_P(OrvaneAccessibilityTest, AnAssistiveProgramOpensAPopUpAndReadsItsTitles) {
  const Accessible menu = program->object("mTransposePopUpButton");
  EXPECT_EQ(program->titles("mTransposePopUpButton").size(), 23U);
  ASSERT_TRUE(menu.doAction("ShowMenu"));
  EXPECT_TRUE(eventually([&] {
    return menu.findNamed("-2 (B♭ clarinet)", "list item").is(AccessibleState::kShowing);
  }));
  input.key("Escape");
}

TEST_P(OrvaneAccessibilityTest, TheHelpIsAWindowWithATextThatCanBeRead) {
  input.key("F1");
  Accessible text;
  EXPECT_TRUE(eventually([&] {
    text = program->application().findNamed("Orvane Help", "frame").findNamed("Orvane help");
    return text.is(AccessibleState::kFocused);
  }));
  EXPECT_NE(text.text().find("The third from C to E is now pure"), std::string::npos);
  keepPicture("help");
}

}  // namespace
}  // namespace orvane::test
