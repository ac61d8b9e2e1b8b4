// What the tuner says, as a speech service is given it.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "tests/desktop/OrvaneRig.h"
#include "tests/speech/SpeechRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

class OrvaneSpeechTest : public OrvaneTest {
 protected:
  bool comesToSay(const std::string &text, seconds longest = kPatience) const {
    return eventually(
        [&] {
          const std::vector<std::string> said = speech.texts();
          return std::find(said.begin(), said.end(), '"' + text + '"') != said.end();
        },
        longest);
  }
  std::string said() const {
    std::string all;
    for (const std::string &text : speech.texts())
      all += text + '\n';
    return all;
  }

  // As the active window's menu shows it when it is opened.
  bool isMarked(const OrvaneProgram &program, const std::string &item) const {
    Accessible menu;
    const auto isOpen = [](const Accessible &object) {
      return object.role() == "popup menu" && object.is(AccessibleState::kShowing);
    };
    input.key("Alt+S");
    EXPECT_TRUE(eventually([&] { return (menu = program.application().find(isOpen)).exists(); }));
    const bool marked = menu.findNamed(item).is(AccessibleState::kChecked);
    input.key("Escape");
    input.key("Escape");
    EXPECT_TRUE(eventually([&] { return !program.application().find(isOpen).exists(); }));
    return marked;
  }

  FakeSpeechService speech;
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneSpeechTest, testing::Values(Kind::kPulseAudio), nameOf);

TEST_P(OrvaneSpeechTest, SaysStatusAndReportAtAKeyInEitherWindow) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  expectText(program, "mFrequencyText", "440.0Hz");
  input.key("Ctrl+S");
  EXPECT_TRUE(comesToSay("ay  , in tune, 440.0 hertz")) << said();

  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Just intonation (Ellis duodene)"));
  ASSERT_TRUE(
      program.choose("mTransposePopUpButton", program.titles("mTransposePopUpButton")[11 + 11]));
  mic.play(466.16);
  expectText(program, "mNoteText", "B 3");
  const WindowId meter = windows.find(kMeterWindow);
  windows.activate(meter);
  ASSERT_TRUE(eventually([&] { return windows.active() == meter; }));
  input.key("Ctrl+D");
  ASSERT_TRUE(eventually([this] { return speech.texts().size() == 2; })) << said();
  EXPECT_NE(
      said().find(
          "Reference Pitch: 440 hertz. Transpose: +11. Tuning: Just intonation (Ellis duodene). "
          "Tonic: C. Input Device: " +
          program.title("mInputDevicePopUpButton") + ". Input Peak Level: "),
      std::string::npos)
      << said();
  EXPECT_EQ(said().find("♭"), std::string::npos);
  EXPECT_EQ(said().find("♯"), std::string::npos);
}

TEST_P(OrvaneSpeechTest, AllFourCommandsWorkInBothWindowsWhoseMenusShowTheSame) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  std::size_t count = 0;
  bool areOn = false;
  for (const char *title : {kMainWindow, kMeterWindow, kMainWindow}) {
    const WindowId window = windows.find(title);
    windows.activate(window);
    ASSERT_TRUE(eventually([&] { return windows.active() == window; }));
    for (const char *key : {"Ctrl+S", "Ctrl+D"}) {
      input.key(key);
      ASSERT_TRUE(eventually([&] { return speech.texts().size() == count + 1; }, kPatience))
          << key << " in " << title << '\n'
          << said();
      ++count;
      // The service reports the end 0.3 s after the beginning; until then it would be left out.
      std::this_thread::sleep_for(milliseconds(600));
    }
    for (const char *item : {"Speak Note Continuously", "Speak Frequency Continuously"})
      EXPECT_EQ(isMarked(program, item), areOn) << item << " in " << title;
    input.key("Ctrl+T");
    input.key("Ctrl+F");
    areOn = !areOn;
    for (const char *item : {"Speak Note Continuously", "Speak Frequency Continuously"})
      EXPECT_EQ(isMarked(program, item), areOn) << item << " in " << title;
  }
  const std::string status = "\"ay  , in tune, 440.0 hertz\"";
  EXPECT_EQ(std::ranges::count(speech.texts(), status), 3) << said();
}

// Under just intonation on A the A is the reference pitch and the F a minor sixth of 8 : 5, an
// octave down; a written C that sounds a B makes them a B flat and an F sharp.
TEST_P(OrvaneSpeechTest, TheReportIsExactlyWhatIsShown) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Just intonation (Ellis duodene)"));
  ASSERT_TRUE(program.choose("mTransposePopUpButton", "-1"));
  ASSERT_TRUE(program.choose("mTonicPopUpButton", program.titles("mTonicPopUpButton")[9]));
  const auto report = [&](const std::string &start, const std::string &pitch) {
    std::string level = program.text("mLevelText");
    level = level.substr(0, level.find("dB"));
    return start + ". Reference Pitch: " + pitch +
           " hertz. Transpose: -1. Tuning: Just intonation (Ellis duodene). Tonic: ay. Input "
           "Device: " +
           program.title("mInputDevicePopUpButton") + ". Input Peak Level: " + level + " dB. ";
  };
  // Nothing more is heard once it shows that, and so nothing else is shown.
  const auto standsAt = [&](double hertz, const std::string &shown) {
    mic.play(hertz);
    return eventually([&] {
      server.freeze();
      std::this_thread::sleep_for(milliseconds(200));
      if (program.text("mFrequencyText") == shown)
        return true;
      server.thaw();
      return false;
    });
  };
  ASSERT_TRUE(standsAt(440.0, "440.0Hz"));
  input.key("Ctrl+D");
  EXPECT_TRUE(comesToSay(report("B flat 4, in tune, 440.0 hertz", "440"))) << said();

  server.thaw();
  ASSERT_TRUE(standsAt(352.0, "352.0Hz"));
  // As it is being typed: the key is the command's and not the field's.
  input.key("Alt+R");
  input.type("44");
  expectText(program, "mReferencePitchText", "44");
  input.key("Ctrl+D");
  EXPECT_TRUE(comesToSay(report("F sharp 4, in tune, 352.0 hertz", "44"))) << said();
  server.thaw();
  EXPECT_EQ(program.text("mReferencePitchText"), "44");
  EXPECT_EQ(speech.texts().size(), 2U) << said();
}

TEST_P(OrvaneSpeechTest, PaintsAsOftenWhileTheServiceHangs) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  input.key("Ctrl+T");
  input.key("Ctrl+F");
  const QRect frequency = program.place("mFrequencyText");
  // A pitch that rises so fast that each block shows another frequency; how often that is painted,
  // and the longest time between two paintings, in seconds.
  double hertz = 430.0;
  const auto paintings = [&] {
    int count = 0;
    double longest = 0.0;
    QImage shown = screen.image(frequency);
    auto last = Clock::now();
    for (const auto end = last + seconds(8); Clock::now() < end;) {
      hertz = hertz > 450.0 ? 430.0 : hertz + 0.1;
      mic.play(hertz);
      std::this_thread::sleep_for(milliseconds(10));
      const QImage now = screen.image(frequency);
      if (now == shown)
        continue;
      shown = now;
      ++count;
      longest = std::max(longest, std::chrono::duration<double>(Clock::now() - last).count());
      last = Clock::now();
    }
    return std::pair(count, longest);
  };
  EXPECT_TRUE(eventually([&] {
    paintings();
    return !speech.texts().empty();
  }));
  const auto [before, longestBefore] = paintings();
  speech.signal(SIGSTOP);
  const auto [during, longestDuring] = paintings();
  RecordProperty("paintings in 8 s before", before);
  RecordProperty("paintings in 8 s while it hangs", during);
  RecordProperty("longest pause in milliseconds before", static_cast<int>(1e3 * longestBefore));
  RecordProperty("longest pause in milliseconds while it hangs",
                 static_cast<int>(1e3 * longestDuring));
  // There are 18 blocks a second.
  EXPECT_GT(before, 80);
  EXPECT_GT(during, before * 8 / 10);
  EXPECT_LT(longestDuring, longestBefore + 0.3);
}

TEST_P(OrvaneSpeechTest, SaysWhatIsSwitchedOnAndThatIsMarkedInTheMenu) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  EXPECT_FALSE(isMarked(program, "Speak Note Continuously"));
  input.key("Ctrl+T");
  mic.play(466.16);
  EXPECT_TRUE(comesToSay("B flat, in tune")) << said();
  EXPECT_TRUE(isMarked(program, "Speak Note Continuously"));
  EXPECT_FALSE(isMarked(program, "Speak Frequency Continuously"));
  windows.activate(windows.find(kMeterWindow));
  ASSERT_TRUE(eventually([&] { return windows.active() == windows.find(kMeterWindow); }));
  input.key("Ctrl+F");
  mic.play(375.0);  // 23 cents above F sharp
  EXPECT_TRUE(comesToSay("F sharp, +23 cent 375.0 hertz")) << said();
  input.key("Ctrl+T");
  mic.play(440.0);
  EXPECT_TRUE(comesToSay("440.0 hertz")) << said();
  windows.activate(windows.find(kMainWindow));
  EXPECT_TRUE(isMarked(program, "Speak Frequency Continuously"));
}

TEST_P(OrvaneSpeechTest, KeepsShowingWhateverTheServiceDoesAndSpeaksWhenItIsBack) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  input.key("Ctrl+T");
  const auto expectItFollows = [&](double hertz, const std::string &note) {
    mic.play(hertz);
    EXPECT_TRUE(eventually([&] { return program.note() == note; }, seconds(2))) << note;
  };
  // Not there.
  expectItFollows(440.0, "A4");
  expectItFollows(466.16, "B♭4");
  EXPECT_EQ(speech.texts().size(), 0U);

  // An instrument never holds its pitch exactly, and only a change is said.
  int turn = 0;
  const auto speaksWithin = [&](std::size_t count, seconds longest) {
    return eventually(
        [&] {
          mic.play(++turn / 10 % 2 == 0 ? 440.0 : 441.0);
          return speech.texts().size() >= count;
        },
        longest);
  };
  for (const char *mode : {"die", "noend", "ok"}) {
    ASSERT_TRUE(speech.start(mode));
    const std::size_t before = speech.texts().size();
    EXPECT_TRUE(speaksWithin(before + 1, seconds(5))) << mode;
    expectItFollows(246.94, "B3");
    expectItFollows(440.0, "A4");
  }
  const std::size_t before = speech.texts().size();
  EXPECT_TRUE(speaksWithin(before + 2, seconds(5)));
  // Hung; and then it ends all the same.
  speech.signal(SIGSTOP);
  expectItFollows(246.94, "B3");
  expectItFollows(440.0, "A4");
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

}  // namespace
}  // namespace orvane::test
