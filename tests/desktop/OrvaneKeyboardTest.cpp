// Every function of the tuner worked with keys alone.
#include <gtest/gtest.h>

#include <optional>

#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using Names = std::vector<std::string>;

class OrvaneKeyboardTest : public OrvaneTest {
 protected:
  void SetUp() override {
    OrvaneTest::SetUp();
    program.emplace(desktop, tree);  // which wants a device to be there
    ASSERT_TRUE(program->opens()) << program->standardError();
    window = windows.find(kMainWindow);
  }

  bool hasFocus(const std::string &control) const {
    return program->object(control).is(AccessibleState::kFocused);
  }
  void expectFocus(const std::string &control) const {
    EXPECT_TRUE(eventually([&] { return hasFocus(control); }, kPatience)) << control;
  }
  void expectHeight(int height) const {
    EXPECT_TRUE(eventually([&] { return windows.content(window).height() == height; }, kPatience))
        << windows.content(window).height() << ", not " << height;
  }
  void expectWindow(const std::string &title) const {
    EXPECT_TRUE(eventually([&] { return windows.title(windows.active()) == title; }, kPatience))
        << windows.title(windows.active()) << " is active, not " << title;
  }

  std::optional<OrvaneProgram> program;
  WindowId window = 0;
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneKeyboardTest, testing::Values(Kind::kPulseAudio), nameOf);

const Names kInReadingOrder = {
    "mReferencePitchText", "mReferencePitchStepper",     "mTuningPopUpButton",
    "mTonicPopUpButton",   "mTransposePopUpButton",      "mInputDevicePopUpButton",
    "mInputVolumeSlider",  "openSoundPreferencesButton", "mDisclosureButton",
};

TEST_P(OrvaneKeyboardTest, TabGoesThroughAllControlsInReadingOrderAndTheFocusIsSeen) {
  input.key("Alt+t");
  expectFocus("mTuningPopUpButton");
  // Without a temperament there is no tonic to choose.
  input.key("Down");
  expectTitle(*program, "mTuningPopUpButton", "Just Intonation");
  input.key("Alt+d");
  expectFocus("mDisclosureButton");
  for (const std::string &control : kInReadingOrder) {
    const QImage before = screen.image(program->place(control));
    input.key("Tab");
    expectFocus(control);
    EXPECT_TRUE(eventually([&] { return screen.image(program->place(control)) != before; }))
        << control;
    keepPicture("focus-" + control);
  }
  for (auto control = kInReadingOrder.rbegin() + 1; control != kInReadingOrder.rend(); ++control) {
    input.key("Shift+Tab");
    expectFocus(*control);
  }
}

TEST_P(OrvaneKeyboardTest, AltWithTheUnderlinedLetterGoesStraightToAControl) {
  input.key("Alt+t");
  input.key("Down");
  const std::vector<std::pair<std::string, std::string>> letters = {
      {"d", "mDisclosureButton"},       {"r", "mReferencePitchText"},
      {"z", "mReferencePitchStepper"},  {"t", "mTuningPopUpButton"},
      {"n", "mTonicPopUpButton"},       {"p", "mTransposePopUpButton"},
      {"i", "mInputDevicePopUpButton"}, {"v", "mInputVolumeSlider"},
  };
  for (const auto &[letter, control] : letters) {
    input.key("Alt+" + letter);
    expectFocus(control);
  }
}

TEST_P(OrvaneKeyboardTest, WhatTheCollapsedWindowDoesNotShowIsNotReached) {
  const int full = windows.content(window).height();
  input.key("Alt+d");
  expectFocus("mDisclosureButton");
  input.key("space");
  // The layouts are 444 and 180 high.
  expectHeight(full - (444 - 180));
  for (const char *key : {"Tab", "Tab", "Shift+Tab", "Shift+Tab"}) {
    input.key(key);
    expectFocus("mDisclosureButton");
  }
  for (const char *key : {"Alt+r", "Alt+t", "Alt+v"})
    input.key(key);
  expectFocus("mDisclosureButton");
  keepPicture("focus-collapsed");
  input.key("space");
  expectHeight(full);
  expectFocus("mReferencePitchText");
}

TEST_P(OrvaneKeyboardTest, EveryFunctionIsThereForTheKeys) {
  input.key("Alt+r");
  expectFocus("mReferencePitchText");
  input.type("442");  // in place of what was there
  input.key("Return");
  expectText(*program, "mReferencePitchText", "442");
  input.key("Tab");
  input.key("Up");
  expectText(*program, "mReferencePitchText", "443");

  input.key("Alt+t");
  expectFocus("mTuningPopUpButton");
  input.key("space");
  ASSERT_TRUE(eventually([this] {
    return program->object("mTuningPopUpButton")
        .findNamed("Kellner", "list item")
        .is(AccessibleState::kShowing);
  }));
  input.key("Down");
  input.key("Down");
  input.key("Return");
  expectTitle(*program, "mTuningPopUpButton", "Kellner");
  input.key("Alt+n");
  input.key("Down");
  input.key("Down");
  EXPECT_TRUE(eventually([this] { return program->title("mTonicPopUpButton").starts_with("D ("); }))
      << program->title("mTonicPopUpButton");
  input.key("Alt+p");
  input.key("Up");
  input.key("Up");
  expectTitle(*program, "mTransposePopUpButton", "-2 (B♭ clarinet)");
  expectText(*program, "mTransposeText", "C = A#/Bb (-2)");
  input.key("Alt+v");
  expectFocus("mInputVolumeSlider");
  input.key("Left");
  EXPECT_TRUE(eventually([this] { return program->value("mInputVolumeSlider") == 99.0; }));
  expectText(*program, "mInputVolumeText", "99");

  input.key("Ctrl+2");
  expectWindow(kMeterWindow);
  input.key("Ctrl+w");
  EXPECT_TRUE(eventually([this] { return windows.find(kMeterWindow) == 0; }));
  input.key("Ctrl+1");
  expectWindow(kMainWindow);
  for (const char *key : {"Escape", "Ctrl+w"}) {
    input.key("F1");
    expectWindow("Orvane Help");
    input.key("Next");
    input.key(key);
    EXPECT_TRUE(eventually([this] { return windows.find("Orvane Help") == 0; })) << key;
    expectWindow(kMainWindow);
  }
  ASSERT_TRUE(program->chooseMenu("Orvane", "About Orvane"));
  expectWindow("About Orvane");
  input.key("Escape");
  expectWindow(kMainWindow);
  ASSERT_TRUE(program->chooseMenu("Speech", "Speak Note Continuously"));
  input.key("Ctrl+f");

  input.key("Ctrl+q");
  EXPECT_EQ(program->wait(), 0);
  const auto stored = storedSettings(desktop);
  EXPECT_EQ(stored.at("ReferencePitchKey"), "443");
  EXPECT_EQ(stored.at("TuningKey"), "2");
  EXPECT_EQ(stored.at("TonicKey"), "2");
  EXPECT_EQ(stored.at("org.velmora.TransposeKey"), "-2");
  EXPECT_EQ(stored.at("org.velmora.TunerMeterKey"), "false");
  EXPECT_EQ(stored.at("org.velmora.TuneSpeechKey"), "true");
  EXPECT_EQ(stored.at("org.velmora.HertzSpeechKey"), "true");
}

}  // namespace
}  // namespace orvane::test
