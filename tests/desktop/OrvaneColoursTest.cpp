// On light and on dark desktops: whether every text and every lamp stands out from its ground, as a
// person sees it on the screen, and whether a change of the desktop's colours reaches everything.
//
// Contrasts are those of the Web Content Accessibility Guidelines 2, 1 to 21.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <set>
#include <utility>

#include "tests/audio/SoundFileMaker.h"
#include "tests/desktop/OrvaneRig.h"
#include "tests/desktop/Portal.h"

namespace orvane::test {
namespace {

constexpr const char *kHelpWindow = "Orvane Help";
// A letter has at least so many pixels of its own colour; fewer are no ink.
constexpr std::size_t kInk = 6;

double luminance(QRgb colour) {
  const auto linear = [](int component) {
    const double value = component / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) +
         0.0722 * linear(qBlue(colour));
}

using Pixels = std::vector<QRgb>;

QRgb mostFrequent(const Pixels &pixels) {
  std::map<QRgb, int> counts;
  for (const QRgb pixel : pixels)
    ++counts[pixel];
  return std::ranges::max_element(counts, {}, [](const auto &entry) { return entry.second; })
      ->first;
}

// The contrast with the ground that so many of the pixels have or exceed; 0 without so many pixels.
double contrast(const Pixels &pixels, QRgb ground, std::size_t count) {
  std::vector<double> contrasts;
  const double base = luminance(ground);
  for (const QRgb pixel : pixels) {
    const double other = luminance(pixel);
    contrasts.push_back((std::max(base, other) + 0.05) / (std::min(base, other) + 0.05));
  }
  std::ranges::sort(contrasts, std::greater());
  return count > 0 && count <= contrasts.size() ? contrasts[count - 1] : 0.0;
}

double textContrast(const QImage &image) {
  Pixels pixels;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      pixels.push_back(image.pixel(x, y));
  return pixels.empty() ? 0.0 : contrast(pixels, mostFrequent(pixels), kInk);
}

// Of a round lamp that fills the image but for a margin on both sides, which shows its ground: the
// contrast of its disc, its rim or its shine, whatever of them stands out most.
double lampContrast(const QImage &image, int margin) {
  Pixels ground;
  Pixels lamp;
  const double radius = image.height() / 2.0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      if (x < margin - 1 || x > image.width() - margin)
        ground.push_back(image.pixel(x, y));
      else if (std::hypot(x + 0.5 - image.width() / 2.0, y + 0.5 - radius) < radius)
        lamp.push_back(image.pixel(x, y));
    }
  return ground.empty() ? 0.0 : contrast(lamp, mostFrequent(ground), lamp.size() / 12);
}

// The toolkit smooths the edges of large letters a little differently from time to time.
bool areAlike(const QImage &one, const QImage &other) {
  if (one.isNull() || one.size() != other.size())
    return false;
  for (int y = 0; y < one.height(); ++y)
    for (int x = 0; x < one.width(); ++x) {
      const QRgb a = one.pixel(x, y);
      const QRgb b = other.pixel(x, y);
      if (std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                    std::abs(qBlue(a) - qBlue(b))}) > 12)
        return false;
    }
  return true;
}

// A long tone a quarter of a semitone sharp, at full scale and then soft; one in tune; silence.
std::string writeNotes(const std::filesystem::path &file) {
  constexpr int kRate = 48000;
  std::vector<float> samples;
  const auto play = [&](double hertz, double amplitude, int seconds) {
    for (int k = 0; k < seconds * kRate; ++k) {
      const double phase = 2.0 * std::numbers::pi * hertz * k / kRate;
      const double value = amplitude * (std::sin(phase) + 0.3 * std::sin(2.0 * phase));
      samples.push_back(static_cast<float>(std::clamp(value, -1.0, 1.0)));
    }
  };
  play(446.4, 1.5, 3);
  play(446.4, 0.1, 3);
  play(440.0, 0.5, 3);
  play(0.0, 0.0, 3);
  return writeSound(file, SF_FORMAT_WAV | SF_FORMAT_FLOAT, kRate, 1, samples).string();
}

std::string writeSilence(const std::filesystem::path &file) {
  return writeSound(file, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, std::vector<float>(48000))
      .string();
}

class OrvaneColoursTest : public DesktopTest, public testing::WithParamInterface<const char *> {
 protected:
  OrvaneColoursTest() : DesktopTest(QSize(1400, 1100)) {}

  // The contrasts that were found, beside the screenshots.
  void TearDown() override {
    if (!report.str().empty())
      std::ofstream(ORVANE_SCREENSHOTS_DIR "/colours-" + std::string(GetParam()) + ".tsv")
          << report.str();
  }

  // Side by side, so that all of them are seen whole.
  void openWindows(const OrvaneProgram &program) {
    ASSERT_TRUE(program.opens()) << program.standardError();
    input.key("F1");
    ASSERT_TRUE(eventually([&] { return windows.find(kHelpWindow) != 0; }, kPatience));
    place(kHelpWindow, {700, 0});
    place(kMeterWindow, {0, 800});
    place(kMainWindow, {0, 0});
    windows.activate(windows.find(kMainWindow));
    ASSERT_TRUE(
        eventually([&] { return windows.active() == windows.find(kMainWindow); }, kPatience));
    input.moveTo({1390, 1090});
  }

  void place(const char *title, const QPoint &origin) {
    const WindowId window = windows.find(title);
    windows.moveResize(window, origin, windows.content(window).size());
    EXPECT_TRUE(eventually([&] { return windows.frame(window).topLeft() == origin; }, kPatience))
        << title;
  }

  QImage picture(const char *title) const {
    return screen.image(windows.content(windows.find(title)));
  }

  bool isDark(const char *title) const {
    const QImage image = picture(title);
    return !image.isNull() && luminance(image.pixel(image.width() - 4, image.height() - 4)) < 0.1;
  }

  void expectContrast(const std::string &what, double found, double least) {
    report << what << '\t' << std::round(found * 100.0) / 100.0 << '\n';
    EXPECT_GE(found, least) << what;
  }

  void expectReadable(const std::string &what, const QRect &rect, double least = 4.5) {
    const QImage image = screen.image(rect);
    EXPECT_FALSE(image.isNull()) << what;
    expectContrast(what, textContrast(image), least);
  }

  // Every control of the main window that has a text, without its frame and its arrow.
  void expectReadableControls(const OrvaneProgram &program, const std::string &layout) {
    int count = 0;
    for (const Accessible &control : program.controls()) {
      const std::string role = control.role();
      const std::string text = role == "text" || role == "combo box"      ? control.text()
                               : role == "label" || role == "push button" ? control.name()
                                                                          : std::string();
      if (text.empty() || !control.is(AccessibleState::kShowing))
        continue;
      const bool isFramed =
          role == "combo box" || role == "push button" || control.is(AccessibleState::kEditable);
      const int frame = isFramed ? 4 : 0;
      const int arrow = role == "combo box" ? 20 : 0;
      expectReadable(layout + ": " + control.name() + " = " + text,
                     control.extents().adjusted(frame, frame, -frame - arrow, -frame),
                     control.is(AccessibleState::kEnabled) ? 4.5 : 2.0);
      ++count;
    }
    expectReadable(layout + ": octave", program.place("mOctaveText"));
    expectReadablePanel(program, layout + ": lamp", "mLampPanel",
                        {{10, 10, 18, 28}, {388, 10, 16, 28}});
    // A number under each lamp.
    for (const int x : {32, 64, 96, 128, 160, 208, 256, 288, 320, 352, 384})
      expectReadablePanel(program, layout + ": lamp at " + std::to_string(x), "mLampPanel",
                          {{x - 15, 47, 30, 13}});
    EXPECT_GE(count, 4) << layout;
  }

  // The signs at those places of a picture that lamps lie on.
  void expectReadablePanel(const OrvaneProgram &program, const std::string &what,
                           const std::string &panel, const std::vector<QRect> &signs) {
    for (const QRect &sign : signs)
      expectReadable(what, sign.translated(program.place(panel).topLeft()));
  }

  void expectReadableMenu(const OrvaneProgram &program) {
    const Accessible bar =
        program.application().findNamed(kMainWindow, "frame").find([](const Accessible &object) {
          return object.role() == "menu bar";
        });
    for (const Accessible &menu : bar.children())
      expectReadable("menu bar: " + menu.name(), menu.extents());
    program.openMenu("Window", "Needle Meter");
    const Accessible popup = program.application().find([](const Accessible &object) {
      return object.role() == "popup menu" && object.is(AccessibleState::kShowing);
    });
    const QRect whole = popup.extents();
    EXPECT_TRUE(screen.save(std::string("colours-menu-") + GetParam()));
    for (const Accessible &item : popup.children())
      if (item.role() == "menu item" && !item.name().empty())
        expectReadable("menu: " + item.name(), item.extents().intersected(whole));
    input.key("Escape");
    input.key("Escape");
  }

  void expectReadableList(const OrvaneProgram &program, const std::string &popUp) {
    const QImage before = screen.image(screen.bounds());
    program.click(popUp);
    std::vector<Accessible> items;
    const auto isOpen = [&] {
      items.clear();
      program.object(popUp).find([&](const Accessible &item) {
        if (item.role() == "list item" && item.name().size() > 1 &&
            item.is(AccessibleState::kShowing))
          items.push_back(item);
        return false;
      });
      return !items.empty();
    };
    EXPECT_TRUE(eventually(isOpen, kPatience));
    EXPECT_TRUE(screen.save(std::string("colours-list-") + GetParam()));
    for (const Accessible &item : items)
      expectReadable("list: " + item.name(), item.extents());
    input.key("Escape");
    const QRect last = items.back().extents();
    EXPECT_TRUE(eventually([&] { return screen.image(last) == before.copy(last); }, kPatience));
  }

  // The least contrast of each kind of lamp in each of its states, by the time all were seen.
  std::map<std::string, double> lampContrasts(const OrvaneProgram &program) const {
    constexpr int kMargin = 4;
    std::map<std::string, QRect> places;
    for (const char *row : {"mFlat", "mSharp"})
      for (int k = 0; k < 5; ++k)
        places[row + std::to_string(k)] = program.place(row + std::to_string(k));
    for (int k = 0; k < 8; ++k)
      places["mLevel" + std::to_string(k)] = program.place("mLevel" + std::to_string(k));
    places["mNatural"] = program.place("mNatural");

    std::map<std::string, double> least;
    eventually(
        [&] {
          for (const auto &[name, rect] : places) {
            const Light before = lamp(program, name);
            const QImage image = screen.image(rect.adjusted(-kMargin, 0, kMargin, 0));
            if (lamp(program, name) != before)
              continue;
            const std::string kind = name == "mNatural"           ? "centre"
                                     : name.starts_with("mLevel") ? "level"
                                                                  : "tuning";
            const std::string state = kind + " " + nameOf(before);
            const double found = lampContrast(image, kMargin);
            least[state] = least.contains(state) ? std::min(least[state], found) : found;
          }
          return least.size() >= 9;
        },
        std::chrono::seconds(40));
    return least;
  }

  static std::string nameOf(Light light) {
    constexpr std::array kNames = {"unlit", "red", "green", "blue", "yellow"};
    return kNames[static_cast<std::size_t>(light)];
  }

  std::ostringstream report;
};

INSTANTIATE_TEST_SUITE_P(Desktops, OrvaneColoursTest, testing::Values("light", "dark"),
                         [](const auto &desktop) { return std::string(desktop.param); });

TEST_P(OrvaneColoursTest, EveryTextAndEveryLampStandsOutFromItsGround) {
  const bool wantsDark = GetParam() == std::string("dark");
  const Portal portal(desktop.sessionBus(), wantsDark ? Portal::kDark : Portal::kLight);
  const OrvaneProgram program(desktop, tree,
                              {"--input", writeNotes(desktop.folder() / "notes.wav")});
  openWindows(program);
  ASSERT_TRUE(eventually([&] { return isDark(kMainWindow) == wantsDark; }, kPatience));
  ASSERT_TRUE(
      eventually([&] { return lamp(program, "mNatural") == Light::kGreen; }, kPatience * 3));
  EXPECT_TRUE(screen.save(std::string("colours-in-tune-") + GetParam()));
  ASSERT_TRUE(eventually([&] { return lamp(program, "mNatural") == Light::kBlue; }, kPatience * 3));
  EXPECT_TRUE(screen.save(std::string("colours-sharp-") + GetParam()));

  expectReadableControls(program, "details");
  expectReadablePanel(
      program, "details: level", "mLevelPanel",
      {{40, 1, 40, 13}, {40, 35, 40, 13}, {40, 69, 40, 13}, {40, 103, 40, 13}, {40, 137, 40, 13}});
  expectReadable(kHelpWindow,
                 program.application().findNamed("Orvane help").extents().adjusted(0, 0, -20, 0));
  expectReadable(kMeterWindow, windows.content(windows.find(kMeterWindow)));
  const auto lamps = lampContrasts(program);
  std::set<std::string> states;
  for (const auto &[state, found] : lamps) {
    states.insert(state);
    expectContrast("lamp: " + state, found, 3.0);
  }
  EXPECT_EQ(states, (std::set<std::string>{"centre blue", "centre green", "centre unlit",
                                           "level green", "level red", "level unlit",
                                           "level yellow", "tuning red", "tuning unlit"}));
  expectReadableMenu(program);
  expectReadableList(program, "mTuningPopUpButton");

  program.click("mDisclosureButton");
  // The details are let go of a little after the window has its height.
  ASSERT_TRUE(eventually(
      [&] { return !program.object("mTuningPopUpButton").is(AccessibleState::kShowing); },
      kPatience));
  input.moveTo({1390, 1090});
  EXPECT_TRUE(screen.save(std::string("colours-collapsed-") + GetParam()));
  expectReadableControls(program, "collapsed");
}

TEST_P(OrvaneColoursTest, AChangeWhileItRunsReachesAllThatIsSeen) {
  const bool startsDark = GetParam() == std::string("dark");
  const std::vector<std::string> arguments{"--input",
                                           writeSilence(desktop.folder() / "silence.wav")};
  constexpr std::array kTitles = {kMainWindow, kMeterWindow, kHelpWindow};
  std::map<std::string, QImage> atStart;
  {
    const Portal portal(desktop.sessionBus(), startsDark ? Portal::kDark : Portal::kLight);
    OrvaneProgram program(desktop, tree, arguments);
    openWindows(program);
    ASSERT_TRUE(eventually([&] { return isDark(kMainWindow) == startsDark; }, kPatience));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    for (const char *title : kTitles)
      atStart[title] = picture(title);
    EXPECT_TRUE(screen.save(std::string("colours-at-start-") + GetParam()));
    program.signal(SIGTERM);
    ASSERT_EQ(program.wait(), 0) << program.standardError();
  }
  std::filesystem::remove_all(desktop.configurationFolder() / "velmora");
  const Portal portal(desktop.sessionBus(), startsDark ? Portal::kLight : Portal::kDark);
  const OrvaneProgram program(desktop, tree, arguments);
  openWindows(program);
  ASSERT_TRUE(eventually([&] { return isDark(kMainWindow) != startsDark; }, kPatience));
  portal.change(startsDark ? "u 1" : "u 2");
  // At some moment of the cursor's blinking.
  for (const char *title : kTitles)
    EXPECT_TRUE(eventually([&] { return areAlike(picture(title), atStart[title]); }, kPatience))
        << title;
  EXPECT_TRUE(screen.save(std::string("colours-changed-to-") + GetParam()));
  EXPECT_EQ(program.standardError(), "");
}

class OrvanePlatformColoursTest : public DesktopTest {};

TEST_F(OrvanePlatformColoursTest, ColoursThatTheDesktopGivesAreKeptWhenTheyAreDark) {
  std::ofstream(desktop.configurationFolder() / "kdeglobals")
      << "[Colors:Window]\nBackgroundNormal=50,30,20\nForegroundNormal=250,240,230\n"
      << "[Colors:View]\nBackgroundNormal=30,20,10\nForegroundNormal=250,240,230\n"
      << "[Colors:Button]\nBackgroundNormal=70,50,40\nForegroundNormal=250,240,230\n";
  const Portal portal(desktop.sessionBus(), Portal::kDark);
  const ChildProcess process(
      desktop.command({"env", "XDG_CURRENT_DESKTOP=KDE", "KDE_SESSION_VERSION=5", ORVANE_PROGRAM,
                       "--input", writeSilence(desktop.folder() / "silence.wav")}));
  ASSERT_TRUE(eventually([&] { return windows.active() == windows.find(kMainWindow); }, kPatience));
  const auto corner = [&] {
    return screen.pixel(windows.content(windows.find(kMainWindow)).bottomRight() - QPoint(3, 3));
  };
  EXPECT_TRUE(eventually([&] { return corner() == QColor(50, 30, 20); }, kPatience))
      << corner().name().toStdString();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_EQ(corner(), QColor(50, 30, 20));
  EXPECT_TRUE(screen.save("colours-platform-dark"));
}

}  // namespace
}  // namespace orvane::test
