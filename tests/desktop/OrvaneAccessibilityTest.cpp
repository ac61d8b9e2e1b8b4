// What assistive programs find of the windows, against what a person sees in them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <optional>
#include <sstream>
#include <thread>

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using std::chrono::seconds;
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

  // What is told of an act from shortly before until two seconds after it.
  std::vector<AccessibleTree::Event> eventsAround(const std::function<void()> &act) const {
    std::thread actor([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
      act();
    });
    auto events = tree.eventsWithin(std::chrono::milliseconds(2500));
    actor.join();
    return events;
  }
  // Of that kind, and of the object of that name when one is named.
  static long countOf(const std::vector<AccessibleTree::Event> &events, const std::string &kind,
                      const std::string &name = {}) {
    return std::ranges::count_if(events, [&](const AccessibleTree::Event &event) {
      return event.kind == kind && (name.empty() || event.source.name() == name);
    });
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

TEST_P(OrvaneAccessibilityTest, AChangedValueIsToldOnceABlockAtMostAndNothingIsAnnounced) {
  mic.play(440.0);
  expectText(*program, "mFrequencyText", "440.0Hz");
  tree.eventsWithin(seconds(2));
  std::atomic<bool> plays{true};
  // Faster than any player.
  std::thread player([&] {
    for (int turn = 0; plays; ++turn) {
      mic.play(std::array{440.0, 452.0, 466.16}.at(static_cast<std::size_t>(turn % 3)));
      std::this_thread::sleep_for(std::chrono::milliseconds(110));
    }
  });
  const auto events = tree.eventsWithin(seconds(10));
  plays = false;
  player.join();
  std::map<std::string, int> counts;
  for (const AccessibleTree::Event &event : events)
    ++counts[event.kind + " [" + event.source.name() + "]"];
  // A block is one and a half periods of 27.5 Hz long; a loaded server may have held back some.
  constexpr int kBlocks = 10 * 55 / 3 + 20;
  for (const char *kind :
       {"PropertyChange accessible-description [Tuning lamps in cents]",
        "PropertyChange accessible-value [Tuning lamps in cents]",
        "PropertyChange accessible-value [Needle meter in cents]", "TextChanged delete [Note]",
        "TextChanged insert [Note]", "TextChanged delete [Deviation in cents]",
        "TextChanged insert [Deviation in cents]", "TextChanged delete [Measured frequency]",
        "TextChanged insert [Measured frequency]", "TextChanged delete [Ideal frequency]",
        "TextChanged insert [Ideal frequency]",
        "TextChanged delete [Difference from the ideal frequency]",
        "TextChanged insert [Difference from the ideal frequency]"}) {
    EXPECT_GT(counts[kind], 0) << kind;
    EXPECT_LE(counts[kind], kBlocks) << kind;
    counts.erase(kind);
  }
  // The level trembles where one pitch goes over into the next.
  for (const char *kind :
       {"PropertyChange accessible-value [Input level in decibels]",
        "TextChanged delete [Input peak level]", "TextChanged insert [Input peak level]"}) {
    EXPECT_LE(counts[kind], kBlocks) << kind;
    counts.erase(kind);
  }
  EXPECT_EQ(counts, (std::map<std::string, int>()));
  RecordProperty("events in 10 s", static_cast<int>(events.size()));

  mic.rest();
  tree.eventsWithin(seconds(6));
  EXPECT_EQ(tree.eventsWithin(seconds(2)).size(), 0U);
}

TEST_P(OrvaneAccessibilityTest, AChangeIsToldOnceByWhateverShowsIt) {
  input.key("Alt+p");
  EXPECT_TRUE(eventually(
      [this] { return program->object("mTransposePopUpButton").is(AccessibleState::kFocused); }));
  const auto events = eventsAround([this] { input.key("Up"); });
  EXPECT_EQ(program->text("mNoteText"), "B flat 4");
  EXPECT_EQ(countOf(events, "TextChanged delete", "Note"), 1);
  EXPECT_EQ(countOf(events, "TextChanged insert", "Note"), 1);
  EXPECT_EQ(countOf(events, "TextChanged insert", "Sound of a written C"), 1);
  EXPECT_EQ(countOf(events, "SelectionChanged", "Transposition"), 1);
  EXPECT_EQ(countOf(events, "SelectionChanged", "Tonic"), 0) << "though it is filled anew";
  const Lines tonics = program->titles("mTonicPopUpButton");
  ASSERT_EQ(tonics.size(), 12U);
  EXPECT_EQ(tonics.front(), program->title("mTonicPopUpButton"));
  EXPECT_EQ(countOf(events, "TextCaretMoved"), 0);
  for (const AccessibleTree::Event &event : events) {
    EXPECT_NE(event.source.name(), "Accidental") << event.kind;
    EXPECT_NE(event.source.name(), "Octave") << event.kind;
    EXPECT_NE(event.source.name(), "Deviation in cents")
        << event.kind << " of what has not changed";
  }

  input.key("Alt+z");
  const auto raised = eventsAround([this] { input.key("Up"); });
  EXPECT_EQ(program->title("mTonicPopUpButton"), "C (262.2Hz)");  // 441·2^(−9/12)
  EXPECT_EQ(countOf(raised, "SelectionChanged", "Tonic"), 1);
  EXPECT_EQ(countOf(raised, "TextChanged insert", "Reference pitch in hertz"), 1);
  EXPECT_EQ(countOf(raised, "TextChanged insert", "Deviation in cents"), 1);
}

TEST_P(OrvaneAccessibilityTest, AMeterOffersNothingToDo) {
  mic.play(446.0);
  expectText(*program, "mNoteText", "A 4");
  mic.rest();
  EXPECT_TRUE(eventually([this] { return program->value("mLevelMeter") == -96.0; }, kPatience));
  for (const Accessible &meter :
       {program->object("mLampMeter"), program->object("mLevelMeter"), needle()}) {
    EXPECT_FALSE(meter.is(AccessibleState::kFocusable)) << meter.name();
    const auto before = meter.value();
    for (const std::string &action : meter.actions()) {
      // The toolkit adds these to every object with a value.
      EXPECT_TRUE(action == "Increase" || action == "Decrease") << action;
      meter.doAction(action);
    }
    meter.setValue(7.0);
    meter.grabFocus();
    EXPECT_EQ(meter.value(), before) << meter.name();
    EXPECT_FALSE(meter.is(AccessibleState::kFocused)) << meter.name();
  }
}

TEST_P(OrvaneAccessibilityTest, WhatTheWindowIsTooSmallToShowIsNotInTheTree) {
  const WindowId window = windows.find(kMainWindow);
  const QSize full = windows.content(window).size();
  const auto names = [this] {
    Lines all;
    for (const Accessible &control : program->controls())
      all.push_back(control.name());
    return all;
  };
  const Lines all = names();
  const auto showsUpTo = [&](const std::string &last) {
    const Lines upper(all.begin(), std::find(all.rbegin(), all.rend(), last).base());
    EXPECT_TRUE(eventually([&] { return names() == upper; }, kPatience))
        << last << ": " << testing::PrintToString(names());
  };
  const auto toggled = eventsAround(
      [this] { ASSERT_TRUE(program->object("mDisclosureButton").doAction("Toggle")); });
  // The label of the triangle is the last one before the details.
  showsUpTo("Details");
  EXPECT_EQ(names().size(), 7U);
  EXPECT_EQ(countOf(toggled, "ChildrenChanged remove"), static_cast<long>(all.size()) - 7);
  for (const Accessible &control : program->controls()) {
    const bool isInside = windows.content(window).contains(control.extents());
    EXPECT_TRUE(isInside || !control.is(AccessibleState::kShowing)) << control.name();
  }
  ASSERT_TRUE(program->object("mDisclosureButton").doAction("Toggle"));
  showsUpTo(all.back());
  EXPECT_TRUE(eventually([&] { return windows.content(window).size() == full; }, kPatience));

  // Lower by as much as puts the lower edge under the stepper, 312 units from the top.
  windows.moveResize(window, QPoint(40, 40), full - QSize(0, kFullLayout.height() - 312));
  EXPECT_TRUE(eventually([&] { return names().size() < all.size(); }, kPatience));
  const Lines left = names();
  EXPECT_EQ(std::ranges::count(left, "Reference pitch stepper"), 1);
  EXPECT_EQ(std::ranges::count(left, "Input peak level"), 1);
  EXPECT_EQ(std::ranges::count(left, "Input level in decibels"), 1) << "of which the top is seen";
  for (const char *gone : {"Temperament:", "Temperament", "Tonic", "Transposition", "Input device",
                           "Input volume", "Sound Settings…"})
    EXPECT_EQ(std::ranges::count(left, gone), 0) << gone;
  keepPicture("accessible-lower");
  windows.moveResize(window, QPoint(40, 40), full);
  showsUpTo(all.back());
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
