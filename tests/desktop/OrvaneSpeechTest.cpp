// What the tuner says, as a speech service is given it.
#include <gtest/gtest.h>

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

  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Just Intonation"));
  ASSERT_TRUE(
      program.choose("mTransposePopUpButton", program.titles("mTransposePopUpButton")[11 + 11]));
  mic.play(466.16);
  expectText(program, "mNoteText", "B 3");
  const WindowId meter = windows.find(kMeterWindow);
  windows.activate(meter);
  ASSERT_TRUE(eventually([&] { return windows.active() == meter; }));
  input.key("Ctrl+D");
  ASSERT_TRUE(eventually([this] { return speech.texts().size() == 2; })) << said();
  EXPECT_NE(said().find("Reference Pitch: 440 hertz. Transpose: +11. Tuning: Just Intonation. "
                        "Tonic: C. Input Device: " +
                        program.title("mInputDevicePopUpButton") + ". Input Peak Level: "),
            std::string::npos)
      << said();
  EXPECT_EQ(said().find("♭"), std::string::npos);
  EXPECT_EQ(said().find("♯"), std::string::npos);
}

TEST_P(OrvaneSpeechTest, SaysWhatIsSwitchedOnAndThatIsMarkedInTheMenu) {
  ASSERT_TRUE(speech.start("ok"));
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  windows.activate(windows.find(kMainWindow));
  // As the menu shows it when it is opened.
  const auto isMarked = [&](const std::string &item) {
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
  };
  EXPECT_FALSE(isMarked("Speak Note Continuously"));
  input.key("Ctrl+T");
  mic.play(466.16);
  EXPECT_TRUE(comesToSay("B flat, in tune")) << said();
  EXPECT_TRUE(isMarked("Speak Note Continuously"));
  EXPECT_FALSE(isMarked("Speak Frequency Continuously"));
  windows.activate(windows.find(kMeterWindow));
  ASSERT_TRUE(eventually([&] { return windows.active() == windows.find(kMeterWindow); }));
  input.key("Ctrl+F");
  mic.play(375.0);  // 23 cents above F sharp
  EXPECT_TRUE(comesToSay("F sharp, +23 cent 375.0 hertz")) << said();
  input.key("Ctrl+T");
  mic.play(440.0);
  EXPECT_TRUE(comesToSay("440.0 hertz")) << said();
  windows.activate(windows.find(kMainWindow));
  EXPECT_TRUE(isMarked("Speak Frequency Continuously"));
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
