// The colours on desktops whose portal, on a bus of the test's own, says this and that.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QPalette>

#include <gtest/gtest.h>

#include "app/DesktopColours.h"
#include "tests/TemporaryFolder.h"
#include "tests/desktop/Portal.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {
namespace {

using Lines = std::vector<std::string>;

// Relative luminance and contrast as the Web Content Accessibility Guidelines 2.1 define them.
double luminance(const QColor &colour) {
  const auto linear = [](int component) {
    const double value = component / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.red()) + 0.7152 * linear(colour.green()) +
         0.0722 * linear(colour.blue());
}

double contrast(const QColor &one, const QColor &other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

double contrast(QPalette::ColorGroup group, QPalette::ColorRole text, QPalette::ColorRole ground) {
  const QPalette palette = QApplication::palette();
  return contrast(palette.color(group, text), palette.color(group, ground));
}

std::string shade() {
  const QPalette palette = QApplication::palette();
  return luminance(palette.color(QPalette::Window)) < luminance(palette.color(QPalette::WindowText))
             ? "dark"
             : "light";
}

// One without any service but those that the test starts.
class PrivateBus {
 public:
  PrivateBus() {
    std::ofstream(mFolder / "bus.conf")
        << "<busconfig><type>session</type><listen>" << address() << "</listen>"
        << "<policy context=\"default\"><allow send_destination=\"*\"/><allow "
           "receive_sender=\"*\"/>"
        << "<allow own=\"*\"/></policy></busconfig>";
    mProcess = ChildProcess({"dbus-daemon", "--nofork", "--nopidfile", "--nosyslog",
                             "--config-file=" + (mFolder / "bus.conf").string()});
    for (int k = 0; k < 1000 && !std::filesystem::is_socket(mFolder / "bus"); ++k)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }

  std::string address() const { return "unix:path=" + (mFolder / "bus").string(); }
  void kill() { mProcess.kill(); }

 private:
  TemporaryFolder mFolder;
  ChildProcess mProcess;
};

class DesktopColoursTest : public testing::Test, public QObject {
 protected:
  DesktopColoursTest() { qApp->installEventFilter(this); }
  ~DesktopColoursTest() override {
    colours.reset();
    QApplication::setPalette(QPalette());
    QDBusConnection::disconnectFromBus(kConnection);
  }

  void start() {
    colours.emplace(
        QDBusConnection::connectToBus(QString::fromStdString(bus.address()), kConnection));
    shades = {shade()};
  }

  bool becomes(const std::string &wanted) const {
    const QDeadlineTimer deadline(15000);
    while (shade() != wanted && !deadline.hasExpired()) {
      QApplication::processEvents();
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return shade() == wanted;
  }

  // Long enough for a round over the bus.
  static void runForAWhile() {
    const QDeadlineTimer deadline(300);
    while (!deadline.hasExpired())
      QApplication::processEvents(QEventLoop::AllEvents, 10);
  }

  // Keeps what the windows are told, beginning with what they start with.
  bool eventFilter(QObject *watched, QEvent *event) override {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange &&
        shades.back() != shade())
      shades.push_back(shade());
    return false;
  }

  const QString kConnection = QStringLiteral("desktop-colours-test");
  const QPalette own = QApplication::palette();
  PrivateBus bus;
  std::optional<DesktopColours> colours;
  Lines shades{"light"};
};

TEST_F(DesktopColoursTest, AreDarkWhereTheDesktopPrefersDark) {
  const Portal portal(bus.address(), Portal::kDark);
  start();
  EXPECT_EQ(shade(), "light");  // the answer is not waited for
  EXPECT_TRUE(becomes("dark"));
}

TEST_F(DesktopColoursTest, AreThePlatformsOwnWhereTheDesktopPrefersLightOrNothing) {
  for (const char *answer : {Portal::kNoPreference, Portal::kLight, "vu 7"}) {
    const Portal portal(bus.address(), answer);
    start();
    runForAWhile();
    EXPECT_EQ(shade(), "light") << answer;
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::WindowText, QPalette::Base,
                                           QPalette::Button, QPalette::Highlight})
      EXPECT_EQ(QApplication::palette().color(role), own.color(role)) << answer << " " << role;
    EXPECT_EQ(shades, Lines{"light"}) << answer;
  }
}

TEST_F(DesktopColoursTest, FollowTheDesktopWhileItRuns) {
  const Portal portal(bus.address(), Portal::kNoPreference);
  start();
  runForAWhile();
  for (const char *change : {"u 1", "u 2", "u 1", "u 0", "u 1", "u 7"}) {
    portal.change(change);
    EXPECT_TRUE(becomes(change == std::string("u 1") ? "dark" : "light")) << change;
  }
  EXPECT_EQ(shades, (Lines{"light", "dark", "light", "dark", "light", "dark", "light"}));
  EXPECT_EQ(QApplication::palette().color(QPalette::Window), own.color(QPalette::Window));
}

TEST_F(DesktopColoursTest, AnAnswerInAnyNumberOfVariantsCounts) {
  for (const char *answer : {"u 1", "vu 1", "vvvu 1", "ReadOne u 1"}) {
    const Portal portal(bus.address(), answer);
    start();
    EXPECT_TRUE(becomes("dark")) << answer;
    portal.change("vvu 2");
    EXPECT_TRUE(becomes("light")) << answer;
  }
}

TEST_F(DesktopColoursTest, WhatIsNoAnswerChangesNothing) {
  for (const char *answer : {"vs dark", "vs 1", "vi 1", "refuse", "silent"}) {
    const Portal portal(bus.address(), answer);
    start();
    runForAWhile();
    EXPECT_EQ(shade(), "light") << answer;
    // The changes are followed nevertheless, and those that are none do not change anything.
    portal.change("u 1");
    EXPECT_TRUE(becomes("dark")) << answer;
    for (const char *change : {"s light", "i 2", "vs 0", "u 1"})
      portal.change(change);
    runForAWhile();
    portal.change("u 2");
    EXPECT_TRUE(becomes("light")) << answer;
    EXPECT_EQ(shades, (Lines{"light", "dark", "light"})) << answer;
  }
}

TEST_F(DesktopColoursTest, APortalThatComesLaterOrAgainIsAskedThen) {
  start();
  runForAWhile();
  EXPECT_EQ(shade(), "light");
  {
    const Portal portal(bus.address(), Portal::kDark);
    EXPECT_TRUE(becomes("dark"));
  }
  runForAWhile();
  EXPECT_EQ(shade(), "dark");
  const Portal portal(bus.address(), Portal::kLight);
  EXPECT_TRUE(becomes("light"));
  portal.change("u 1");
  EXPECT_TRUE(becomes("dark"));
}

TEST_F(DesktopColoursTest, StayWhenTheBusDiesOrIsNotThere) {
  const Portal portal(bus.address(), Portal::kDark);
  start();
  ASSERT_TRUE(becomes("dark"));
  bus.kill();
  runForAWhile();
  EXPECT_EQ(shade(), "dark");
  QDBusConnection::disconnectFromBus(kConnection);
  start();
  runForAWhile();
  EXPECT_EQ(shade(), "light");
}

TEST_F(DesktopColoursTest, EveryTextOfBothKindsCanBeRead) {
  struct Pair {
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
  };
  constexpr std::array kPairs = {Pair{QPalette::WindowText, QPalette::Window},
                                 Pair{QPalette::Text, QPalette::Base},
                                 Pair{QPalette::Text, QPalette::AlternateBase},
                                 Pair{QPalette::ButtonText, QPalette::Button},
                                 Pair{QPalette::HighlightedText, QPalette::Highlight},
                                 Pair{QPalette::ToolTipText, QPalette::ToolTipBase},
                                 Pair{QPalette::Link, QPalette::Base},
                                 Pair{QPalette::Text, QPalette::Window}};
  const Portal portal(bus.address(), Portal::kLight);
  start();
  runForAWhile();
  for (const char *wanted : {"light", "dark"}) {
    portal.change(wanted == std::string("dark") ? "u 1" : "u 2");
    ASSERT_TRUE(becomes(wanted));
    for (const auto &[text, ground] : kPairs) {
      EXPECT_GE(contrast(QPalette::Active, text, ground), 4.5) << wanted << " " << text;
      EXPECT_GE(contrast(QPalette::Inactive, text, ground), 4.5) << wanted << " " << text;
    }
    for (const auto &[text, ground] : {kPairs[0], kPairs[1], kPairs[3]})
      EXPECT_GE(contrast(QPalette::Disabled, text, ground), 3.0) << wanted << " " << text;
  }
  // What is only seen in the dark colours: a link of each kind, a hint in an empty field, and the
  // highlighted edge of what has the focus.
  EXPECT_GE(contrast(QPalette::Active, QPalette::LinkVisited, QPalette::Base), 4.5);
  EXPECT_GE(contrast(QPalette::Active, QPalette::PlaceholderText, QPalette::Base), 4.5);
  EXPECT_GE(contrast(QPalette::Active, QPalette::Highlight, QPalette::Window), 3.0);
}

TEST_F(DesktopColoursTest, NoColourOfTheLightOnesIsLeftInTheDarkOnes) {
  const Portal portal(bus.address(), Portal::kDark);
  start();
  ASSERT_TRUE(becomes("dark"));
  const QPalette palette = QApplication::palette();
  for (const QPalette::ColorGroup group :
       {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
    for (const QPalette::ColorRole role :
         {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button,
          QPalette::Light, QPalette::Midlight, QPalette::Mid, QPalette::Dark, QPalette::Shadow,
          QPalette::ToolTipBase})
      EXPECT_LT(luminance(palette.color(group, role)), 0.1) << group << " " << role;
}

}  // namespace
}  // namespace orvane::test
