// Each control at each size of the window, worked with the pointer and with the keys alone.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <optional>

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

// Eighty letters.
constexpr const char *kLongName =
    "The eight-channel interface under the desk, with the good microphone on input 12";

class OrvaneZoomedControlsTest : public DesktopTest, public testing::WithParamInterface<int> {
 protected:
  // Room for three times the window.
  explicit OrvaneZoomedControlsTest(Kind kind = Kind::kPulseAudio)
      : DesktopTest(QSize(1400, 1600)), server(kind) {}

  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_FALSE(server.loadSource("Mic", 48000, 1, "device.description=Mic").empty());
    ASSERT_FALSE(
        server.loadSource("Long", 48000, 1, "device.description=\"" + std::string(kLongName) + '"')
            .empty());
  }

  // Starts the program at the size of the test.
  void start() {
    program.emplace(desktop, tree);
    ASSERT_TRUE(program->opens()) << program->standardError();
    window = windows.find(kMainWindow);
    const int menuHeight = windows.content(window).height() - kFullLayout.height();
    windows.moveResize(window, {0, 0},
                       (QSizeF(kFullLayout) * zoom()).toSize() + QSize(0, menuHeight));
    ASSERT_TRUE(eventually([this] {
      return std::abs(program->place("mTuningPopUpButton").width() - kPopUpWidth * zoom()) <= 2.0 &&
             program->place("mInputVolumeSlider").bottom() < windows.content(window).bottom();
    }));
  }

  static double zoom() { return GetParam() / 100.0; }

  // In the screen's pixels, from the upper left corner of a control in units before zooming.
  QPoint at(const std::string &control, double x, double y) const {
    const QPointF corner = program->place(control).topLeft();
    return (corner + QPointF(x, y) * zoom()).toPoint();
  }

  Accessible item(const std::string &popUp, const std::string &title) const {
    return program->object(popUp).findNamed(title, "list item");
  }
  bool isOpen(const std::string &popUp, const std::string &title) const {
    return item(popUp, title).is(AccessibleState::kShowing);
  }

  // The list that has been opened is on the screen, over its button or right beside it, and what it
  // says can be read.
  void expectListAtItsButton(const std::string &popUp, const std::string &selected) const {
    ASSERT_TRUE(eventually([&] { return isOpen(popUp, selected); }, kPatience)) << selected;
    const QRect button = program->place(popUp);
    const QRect list = program->object(popUp)
                           .find([](const Accessible &object) { return object.role() == "list"; })
                           .extents();
    EXPECT_TRUE(screen.bounds().contains(list));
    EXPECT_TRUE(list.adjusted(0, -8, 0, 8).intersects(button));
    // Unless it is too wide for the rest of the screen.
    if (list.right() < screen.bounds().right() - 2) {
      EXPECT_NEAR(list.left(), button.left(), 8.0 * std::max(1.0, zoom()));
    }
    EXPECT_GE(list.width(), button.width() - 16.0 * zoom());
    // Letters of 13 units, at least as large as in a window of the original size.
    EXPECT_GE(item(popUp, selected).extents().height(), 13.0 * std::max(1.0, zoom()));
    EXPECT_TRUE(screen.save("list-" + std::to_string(GetParam()) + "-" + popUp));
  }

  void expectChosenByPointerAndByKeys(const std::string &popUp, const std::string &keys,
                                      std::size_t index) const {
    SCOPED_TRACE(popUp);
    const std::vector<std::string> titles = program->titles(popUp);
    ASSERT_GT(titles.size(), index + 1);
    program->click(popUp);
    expectListAtItsButton(popUp, program->title(popUp));
    const QRect place = item(popUp, titles[index]).extents();
    ASSERT_FALSE(place.isEmpty());
    input.click(place.center());
    const auto isSelected = [&](std::size_t wanted) {
      return program->object(popUp)
          .find([&, k = std::size_t{0}](const Accessible &object) mutable {
            return object.role() == "list item" && k++ == wanted &&
                   object.name() == program->title(popUp);
          })
          .exists();
    };
    EXPECT_TRUE(eventually([&] { return isSelected(index); }, kPatience)) << program->title(popUp);
    input.key(keys);
    input.key("space");
    ASSERT_TRUE(eventually([&] { return isOpen(popUp, program->title(popUp)); }, kPatience));
    input.key("Down");
    input.key("Return");
    EXPECT_TRUE(eventually([&] { return isSelected(index + 1); }, kPatience))
        << program->title(popUp);
  }

  PrivateServer server;
  std::optional<OrvaneProgram> program;
  WindowId window = 0;
};

const auto kPercent = testing::Values(75, 100, 150, 200, 300);
const auto kPercentName = [](const testing::TestParamInfo<int> &test) {
  return std::to_string(test.param);
};

INSTANTIATE_TEST_SUITE_P(Percent, OrvaneZoomedControlsTest, kPercent, kPercentName);

TEST_P(OrvaneZoomedControlsTest, AListOpensAtItsButtonAndIsChosenFrom) {
  start();
  // Each time the next one is the first with the keys. The second has a tonic.
  expectChosenByPointerAndByKeys("mTuningPopUpButton", "Alt+t", 2);
  expectChosenByPointerAndByKeys("mTonicPopUpButton", "Alt+n", 3);
  expectChosenByPointerAndByKeys("mTransposePopUpButton", "Alt+p", 9);
  expectChosenByPointerAndByKeys("mInputDevicePopUpButton", "Alt+i", 0);
}

TEST_P(OrvaneZoomedControlsTest, ATitleTooLongForItsButtonIsToldInFull) {
  start();
  const std::vector<std::string> titles = program->titles("mInputDevicePopUpButton");
  const auto title = std::find_if(titles.begin(), titles.end(), [](const std::string &each) {
    return each.find(kLongName) != std::string::npos;
  });
  ASSERT_NE(title, titles.end());
  ASSERT_TRUE(program->choose("mInputDevicePopUpButton", *title));
  expectTitle(*program, "mInputDevicePopUpButton", *title);
  input.moveTo(at("mInputDevicePopUpButton", 30, 5));
  input.moveTo(at("mInputDevicePopUpButton", 40, 12));
  EXPECT_TRUE(eventually([&] {
    return program->application().findNamed(*title, "tool tip").is(AccessibleState::kShowing);
  }));
  EXPECT_TRUE(screen.save("long-title-" + std::to_string(GetParam())));
}

TEST_P(OrvaneZoomedControlsTest, TheKnobGoesAsFarAsThePointer) {
  start();
  program->click("mInputVolumeSlider");
  input.key("Home");
  // The knob is 15 of 104 units wide: a way of 89 for 100 values.
  double knob = 7.5;
  double value = 0.0;
  for (const double way : {22.25, 44.5, -8.9}) {
    input.drag(at("mInputVolumeSlider", knob, 12), at("mInputVolumeSlider", knob + way, 12));
    knob += way;
    value = value == 0.0 ? 25.0 : value == 25.0 ? 75.0 : 65.0;
    EXPECT_TRUE(eventually(
        [&] {
          const auto shown = program->value("mInputVolumeSlider");
          return shown && std::abs(*shown - value) <= 2.0;
        },
        kPatience))
        << program->value("mInputVolumeSlider").value_or(-1.0) << ", not " << value;
  }
}

// Where the letters are that are drawn in a field, apart from each other: the columns of each.
std::vector<std::pair<int, int>> letterColumns(const QImage &field) {
  std::vector<std::pair<int, int>> letters;
  bool wasInk = false;
  for (int x = 0; x < field.width(); ++x) {
    bool isInk = false;
    for (int y = 0; y < field.height(); ++y)
      isInk = isInk || qGray(field.pixel(x, y)) < 150;
    if (isInk && !wasInk)
      letters.emplace_back(x, x);
    if (isInk)
      letters.back().second = x;
    wasInk = isInk;
  }
  return letters;
}

TEST_P(OrvaneZoomedControlsTest, TextIsTypedAndSelectedWhereThePointerIs) {
  start();
  // With the keys, lest the click below becomes the second of a pair.
  input.key("Alt+r");
  input.key("Ctrl+A");
  input.type("8 8 8 8");
  expectText(*program, "mReferencePitchText", "8 8 8 8");
  const QRect field = program->place("mReferencePitchText");
  const int margin = static_cast<int>(std::lround(4.0 * zoom()));
  const QRect inside = field.adjusted(margin, margin, -margin, -margin);
  std::vector<std::pair<int, int>> letters;
  // The text cursor, which comes and goes, is behind the last one.
  ASSERT_TRUE(eventually([&] {
    letters = letterColumns(screen.image(inside));
    return letters.size() >= 4;
  })) << letters.size();
  const auto left = [&](std::size_t letter) {
    return QPoint(inside.left() + letters[letter].first, inside.center().y());
  };
  const auto right = [&](std::size_t letter) {
    return QPoint(inside.left() + letters[letter].second, inside.center().y());
  };
  input.click(left(2));
  input.type("5");
  expectText(*program, "mReferencePitchText", "8 8 58 8");
  input.key("BackSpace");
  expectText(*program, "mReferencePitchText", "8 8 8 8");
  input.drag(left(1), right(2));
  EXPECT_TRUE(screen.save("selection-" + std::to_string(GetParam())));
  input.type("4");
  expectText(*program, "mReferencePitchText", "8 4 8");
}

TEST_P(OrvaneZoomedControlsTest, TheSoundSettingsAreOpenedByPointerAndByKey) {
  // In place of the system's.
  const std::filesystem::path log = desktop.folder() / "sound-settings.log";
  const std::filesystem::path settings = desktop.folder() / "pavucontrol";
  std::ofstream(settings) << "#!/bin/sh\necho \"$@\" >> '" << log.string() << "'\n";
  std::filesystem::permissions(settings, std::filesystem::perms::owner_all);
  const std::string formerPath = getenv("PATH");
  setenv("PATH", (desktop.folder().string() + ":" + formerPath).c_str(), 1);
  start();
  setenv("PATH", formerPath.c_str(), 1);
  const auto pagesShown = [&log] {
    std::ifstream file(log);
    const std::string lines{std::istreambuf_iterator<char>(file), {}};
    return std::count(lines.begin(), lines.end(), '\n');
  };
  program->click("openSoundPreferencesButton");
  // Opened, and then the input page shown.
  EXPECT_TRUE(eventually([&] { return pagesShown() == 2; })) << pagesShown();
  input.key("Alt+g");
  EXPECT_TRUE(eventually([&] { return pagesShown() == 4; })) << pagesShown();
}

TEST_P(OrvaneZoomedControlsTest, TheTriangleIsTurnedByPointerAndByKey) {
  start();
  const int full = windows.content(window).height();
  const int details = (kFullLayout - kCollapsedLayout).height();
  const int collapsed = full - static_cast<int>(std::lround(details * zoom()));
  const auto expectHeight = [&](int height) {
    EXPECT_TRUE(eventually([&] { return windows.content(window).height() == height; }, kPatience))
        << windows.content(window).height() << ", not " << height;
  };
  // It looks pressed, and a release beside it does nothing. The press gives it the focus, if it has
  // none yet.
  input.key("Alt+d");
  ASSERT_TRUE(eventually(
      [&] { return program->object("mDisclosureButton").is(AccessibleState::kFocused); }));
  const QRect triangle = program->place("mDisclosureButton");
  input.moveTo(at("mDisclosureButton", 30, 12));
  const QImage before = screen.image(triangle);
  input.moveTo(triangle.center());
  input.press();
  EXPECT_TRUE(eventually([&] { return screen.image(triangle) != before; }));
  input.moveTo(at("mDisclosureButton", 30, 12));
  input.release();
  EXPECT_TRUE(eventually([&] { return screen.image(triangle) == before; }));
  EXPECT_EQ(windows.content(window).height(), full);

  input.click(at("mDisclosureButton", 2, 2));
  expectHeight(collapsed);
  input.click(at("mDisclosureButton", 22, 22));
  expectHeight(full);
  input.key("Alt+d");
  input.key("space");
  expectHeight(collapsed);
  EXPECT_TRUE(screen.save("collapsed-" + std::to_string(GetParam())));
  // Nothing keeps the focus when it collapses.
  input.key("Alt+d");
  input.key("space");
  expectHeight(full);
}

// A card with two ports, each of which is a source to choose.
class OrvaneZoomedSourcesTest : public OrvaneZoomedControlsTest {
 protected:
  OrvaneZoomedSourcesTest() : OrvaneZoomedControlsTest(Kind::kPipeWire) {}

  void SetUp() override {
    ASSERT_TRUE(server.start());
    card = ChildProcess({ORVANE_FAKE_CARD});
    ASSERT_TRUE(eventually([] { return hears("analog-input-mic"); }));
  }

  static bool hears(const std::string &port) {
    return PrivateServer::control({"list", "sources"}).find("Active Port: " + port) !=
           std::string::npos;
  }

  ChildProcess card;
};

INSTANTIATE_TEST_SUITE_P(Percent, OrvaneZoomedSourcesTest, kPercent, kPercentName);

TEST_P(OrvaneZoomedSourcesTest, ASourceOfADeviceIsChosenByPointerAndByKeys) {
  start();
  const std::vector<std::string> titles = program->titles("mInputDevicePopUpButton");
  ASSERT_EQ(titles.size(), 2U);
  ASSERT_TRUE(titles[0].ends_with("Microphone")) << titles[0];
  ASSERT_TRUE(titles[1].ends_with("Line In")) << titles[1];
  ASSERT_TRUE(program->choose("mInputDevicePopUpButton", titles[1]));
  EXPECT_TRUE(eventually([] { return hears("analog-input-linein"); }));
  expectTitle(*program, "mInputDevicePopUpButton", titles[1]);
  input.key("Alt+i");
  input.key("Up");
  EXPECT_TRUE(eventually([] { return hears("analog-input-mic"); }));
  expectTitle(*program, "mInputDevicePopUpButton", titles[0]);
}

}  // namespace
}  // namespace orvane::test
