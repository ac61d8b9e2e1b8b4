// Every function of the tuner worked with keys alone.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include <QFile>
#include <QRegularExpression>

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using Names = std::vector<std::string>;

class OrvaneKeyboardTest : public OrvaneTest {
 protected:
  void SetUp() override {
    OrvaneTest::SetUp();
    ASSERT_TRUE(loadSource("Line"));
    standInForSoundSettings();
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

  // The controls that the keyboard acts on, by their names.
  Accessible focusable(const std::string &name) const {
    for (const Accessible &control : program->controls()) {
      if (control.name() == name && control.is(AccessibleState::kFocusable))
        return control;
    }
    return {};
  }
  void expectFocused(const std::string &name) const {
    EXPECT_TRUE(eventually([&] { return focusable(name).is(AccessibleState::kFocused); })) << name;
  }
  // Line by line from the top, and in a line from the left. What overlaps by half stands in one.
  Names inReadingOrder() const {
    std::vector<std::pair<QRect, std::string>> places;
    for (const Accessible &control : program->controls()) {
      if (control.is(AccessibleState::kFocusable) && control.is(AccessibleState::kEnabled))
        places.emplace_back(control.extents(), control.name());
    }
    std::ranges::sort(places, {}, [](const auto &place) { return place.first.center().y(); });
    Names names;
    for (auto line = places.begin(); line != places.end();) {
      const QRect first = line->first;
      const auto end = std::find_if(line, places.end(), [&](const auto &place) {
        return place.first.center().y() > first.bottom();
      });
      std::ranges::sort(line, end, {}, [](const auto &place) { return place.first.left(); });
      std::transform(line, end, std::back_inserter(names),
                     [](const auto &place) { return place.second; });
      line = end;
    }
    return names;
  }
  static int differentPixels(const QImage &one, const QImage &other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
      for (int x = 0; x < one.width(); ++x)
        count += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
    }
    return count;
  }
  // The underlined letters of the window's texts and menu titles, by the texts without them.
  static std::map<std::string, std::string> mnemonics() {
    QFile file(QStringLiteral(ORVANE_RESOURCES_DIR "/MainMenu.ui"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    // Those of the menus' items count in an open menu only.
    const QString windowAlone =
        QString::fromUtf8(file.readAll()).section(QStringLiteral("<action name"), 0, 0);
    std::map<std::string, std::string> letters;
    const QRegularExpression text(QStringLiteral("<string>([^<]*)&amp;(\\w)([^<]*)</string>"));
    for (auto all = text.globalMatch(windowAlone); all.hasNext();) {
      const auto found = all.next();
      letters[(found.captured(1) + found.captured(2) + found.captured(3)).toStdString()] =
          found.captured(2).toLower().toStdString();
    }
    return letters;
  }

  // For the name of a file.
  static std::string identifier(std::string name) {
    std::erase_if(name, [](char c) { return c < 'A' || c > 'z'; });
    return name;
  }
  // A program in the place of the desktop's, which only counts how often it is run.
  void standInForSoundSettings() const {
    const auto standIn = desktop.folder() / "pavucontrol";
    std::ofstream(standIn) << "#!/bin/sh\necho \"$@\" >>" << desktop.folder() / "opened"
                           << "\n";
    std::filesystem::permissions(standIn, std::filesystem::perms::owner_all);
    setenv("PATH", (desktop.folder().string() + ":" + getenv("PATH")).c_str(), 1);
  }
  int soundSettingsOpened() const {
    std::ifstream file(desktop.folder() / "opened");
    return static_cast<int>(std::count(std::istreambuf_iterator<char>(file), {}, '\n'));
  }

  std::optional<OrvaneProgram> program;
  WindowId window = 0;
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneKeyboardTest, testing::Values(Kind::kPulseAudio), nameOf);

TEST_P(OrvaneKeyboardTest, TabGoesThroughAllControlsInReadingOrderAndBack) {
  input.key("Alt+t");
  expectFocus("mTuningPopUpButton");
  // Without a temperament there is no tonic to choose.
  input.key("Down");
  expectTitle(*program, "mTuningPopUpButton", "1/3-comma meantone (Salinas, 1577)");
  const Names order = inReadingOrder();
  EXPECT_EQ(order.size(), 9U);
  input.key("Alt+d");
  expectFocused(order.front());
  for (int round = 0; round < 2; ++round) {
    for (std::size_t k = 1; k <= order.size(); ++k) {
      input.key("Tab");
      expectFocused(order[k % order.size()]);
    }
  }
  for (std::size_t k = order.size(); k-- > 0;) {
    input.key("Shift+Tab");
    expectFocused(order[k]);
  }
}

TEST_P(OrvaneKeyboardTest, TheFocusIsSeenAtEveryControlAtEachSize) {
  input.key("Alt+t");
  expectFocus("mTuningPopUpButton");
  input.key("Down");
  const QSize full = windows.content(window).size();
  const int menuBar = full.height() - kFullLayout.height();
  for (int zoom : {1, 2}) {
    windows.moveResize(window, QPoint(20, 20), kFullLayout * zoom + QSize(0, menuBar));
    EXPECT_TRUE(eventually([&] { return program->place("mDisclosureButton").width() == 24 * zoom; },
                           kPatience));
    input.key("Alt+d");
    for (const std::string &name : inReadingOrder()) {
      expectFocused(name);
      const QRect place = focusable(name).extents();
      // The text cursor is not the focus's only mark: it blinks.
      const QImage with = screen.image(place);
      keepPicture("focus-" + std::to_string(zoom) + "-" + identifier(name));
      input.key("Tab");
      EXPECT_TRUE(eventually([&] { return differentPixels(with, screen.image(place)) > 20 * zoom; },
                             kPatience))
          << name << " at " << zoom;
    }
  }
}

TEST_P(OrvaneKeyboardTest, EveryControlHasALetterOfItsOwn) {
  input.key("Alt+t");
  input.key("Down");
  const std::map<std::string, std::string> letters = mnemonics();
  std::set<std::string> used;
  for (const auto &[text, letter] : letters)
    EXPECT_TRUE(used.insert(letter).second) << letter << " stands in " << text << " too";
  std::map<std::string, std::string> letterOf;
  for (const Accessible &control : program->controls()) {
    if (letters.contains(control.name()) && control.role() == "push button")
      letterOf[control.name()] = letters.at(control.name());
    for (const Accessible &target : control.related(AccessibleRelation::kLabelFor)) {
      if (letters.contains(control.name()))
        letterOf[target.name()] = letters.at(control.name());
    }
  }
  for (const std::string &name : inReadingOrder()) {
    ASSERT_TRUE(letterOf.contains(name)) << name;
    input.key("Alt+" + letterOf[name]);
    if (focusable(name).role() == "push button")
      EXPECT_TRUE(eventually([this] { return soundSettingsOpened() > 0; }, kPatience)) << name;
    else
      expectFocused(name);
  }
  EXPECT_EQ(letterOf.size(), 9U);
}

TEST_P(OrvaneKeyboardTest, WhatTheCollapsedWindowDoesNotShowIsNotReached) {
  const int full = windows.content(window).height();
  input.key("Alt+d");
  expectFocus("mDisclosureButton");
  input.key("space");
  expectHeight(full - (kFullLayout - kCollapsedLayout).height());
  // The program learns its height a moment after the desktop knows it.
  EXPECT_TRUE(eventually([this] { return program->controls().size() < 10; }, kPatience));
  for (const char *key : {"Tab", "Tab", "Shift+Tab", "Shift+Tab"}) {
    input.key(key);
    expectFocus("mDisclosureButton");
  }
  for (const char *key : {"Alt+r", "Alt+z", "Alt+t", "Alt+n", "Alt+p", "Alt+i", "Alt+v", "Alt+g"})
    input.key(key);
  expectFocus("mDisclosureButton");
  keepPicture("focus-collapsed");
  input.key("space");
  expectHeight(full);
  expectFocus("mReferencePitchText");

  // Made so low that the last row is cut off, and no more.
  const QSize size = windows.content(window).size();
  windows.moveResize(window, QPoint(40, 40), size - QSize(0, 45));
  expectHeight(full - 45);
  input.key("Alt+i");
  expectFocus("mInputDevicePopUpButton");
  for (const char *key : {"Alt+v", "Alt+g"})
    input.key(key);
  expectFocus("mInputDevicePopUpButton");
  input.key("Tab");
  expectFocus("mDisclosureButton");
  EXPECT_FALSE(eventually([this] { return soundSettingsOpened() > 0; }, std::chrono::seconds(1)));
}

TEST_P(OrvaneKeyboardTest, TheDeviceIsChangedAndTheSoundSettingsAreOpened) {
  Instrument line(server.pipeOf("Line"));
  mic.play(440.0);
  line.play(392.0);
  const Names devices = program->titles("mInputDevicePopUpButton");
  ASSERT_EQ(devices.size(), 2U);
  const bool isMicFirst = devices.front().find("Mic") != std::string::npos;
  const Names notes = isMicFirst ? Names{"A4", "G4"} : Names{"G4", "A4"};
  expectNote(*program, notes[0]);
  input.key("Alt+i");
  expectFocus("mInputDevicePopUpButton");
  input.key("Down");
  expectTitle(*program, "mInputDevicePopUpButton", devices[1]);
  expectNote(*program, notes[1]);
  input.key("space");
  ASSERT_TRUE(eventually([&] {
    return program->object("mInputDevicePopUpButton")
        .findNamed(devices[0], "list item")
        .is(AccessibleState::kShowing);
  }));
  input.key("Up");
  input.key("Return");
  expectTitle(*program, "mInputDevicePopUpButton", devices[0]);
  expectNote(*program, notes[0]);

  // Once for the settings and once for their page of inputs, by each way there is.
  input.key("Alt+g");
  EXPECT_TRUE(eventually([this] { return soundSettingsOpened() == 2; }, kPatience));
  input.key("Alt+v");
  input.key("Tab");
  input.key("space");
  EXPECT_TRUE(eventually([this] { return soundSettingsOpened() == 4; }, kPatience));
  ASSERT_TRUE(program->chooseMenu("Orvane", "Sound Settings…"));
  EXPECT_TRUE(eventually([this] { return soundSettingsOpened() == 6; }, kPatience));

  input.key("Ctrl+h");
  const WindowId meter = windows.find(kMeterWindow);
  EXPECT_TRUE(eventually([&] { return windows.isMinimized(window) && windows.isMinimized(meter); },
                         kPatience));
}

// A letter's key in the field is a command's or the field's, never both and never none.
TEST_P(OrvaneKeyboardTest, ACommandsKeyWorksInTheFieldAndLeavesTheTypingAlone) {
  input.key("Alt+r");
  expectFocus("mReferencePitchText");
  input.type("44");
  input.key("Ctrl+t");
  input.key("Ctrl+f");
  for (const char *key : {"Ctrl+s", "Ctrl+d"})
    input.key(key);
  expectText(*program, "mReferencePitchText", "44");
  expectFocus("mReferencePitchText");
  input.key("Ctrl+2");
  expectWindow(kMeterWindow);
  input.key("Ctrl+1");
  expectWindow(kMainWindow);
  expectFocus("mReferencePitchText");
  input.type("3");
  expectText(*program, "mReferencePitchText", "443");
  // The field's own.
  input.key("Ctrl+z");
  expectText(*program, "mReferencePitchText", "440");
  input.key("Ctrl+a");
  input.key("Ctrl+x");
  expectText(*program, "mReferencePitchText", "");
  input.key("Ctrl+v");
  input.key("Ctrl+v");
  expectText(*program, "mReferencePitchText", "440440");
  input.key("Ctrl+u");
  expectText(*program, "mReferencePitchText", "");
  input.type("442");
  input.key("Ctrl+h");
  EXPECT_TRUE(eventually([this] { return windows.isMinimized(window); }, kPatience));
  windows.activate(window);
  expectWindow(kMainWindow);
  expectText(*program, "mReferencePitchText", "442");
  input.key("Ctrl+q");
  EXPECT_EQ(program->wait(), 0);
  const auto stored = storedSettings(desktop);
  EXPECT_EQ(stored.at("org.velmora.TuneSpeechKey"), "true");
  EXPECT_EQ(stored.at("org.velmora.HertzSpeechKey"), "true");
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
        .findNamed("1/4-comma meantone (Aaron, 1523)", "list item")
        .is(AccessibleState::kShowing);
  }));
  input.key("Down");
  input.key("Down");
  input.key("Return");
  expectTitle(*program, "mTuningPopUpButton", "1/4-comma meantone (Aaron, 1523)");
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
