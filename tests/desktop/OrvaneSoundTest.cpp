// The window program hears what is played, shows it, and sets the volume it is heard at.
#include <gtest/gtest.h>

#include <thread>

#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using Clock = std::chrono::steady_clock;

constexpr const char *kNoDevice = "Sorry, Orvane cannot run with no audio input device.";

class OrvaneSoundTest : public OrvaneTest {
 protected:
  // Percent, as the server's own control program tells it; -1 when it tells none.
  static int serverVolume() {
    const std::string answer = PrivateServer::control({"get-source-volume", "Mic"});
    const std::size_t slash = answer.find('/');
    return slash == std::string::npos ? -1 : std::stoi(answer.substr(slash + 1));
  }

  bool shows(const OrvaneProgram &program, const std::string &note, Light light) const {
    return program.note() == note && lamp(program, "mNatural") == light;
  }

  // A tone that is being played is never taken for silence. Its pitch may waver a little: a server
  // keeps the pipe at its own pace.
  void expectNeverGray(const OrvaneProgram &program) const {
    for (int look = 0; look < 20; ++look) {
      EXPECT_NE(lamp(program, "mNatural"), Light::kGray);
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneSoundTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire), nameOf);

TEST_P(OrvaneSoundTest, ShowsThePlayedNotesAndGraysTheCentreLampInSilence) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  EXPECT_TRUE(eventually([&] { return shows(program, "A4", Light::kGray); })) << program.note();
  EXPECT_NE(windows.find(kMeterWindow), 0U);
  keepPicture("silence-at-start");

  mic.play(466.16);
  EXPECT_TRUE(eventually([&] { return shows(program, "B♭4", Light::kGreen); })) << program.note();
  expectText(program, "mCentText", "±0");
  expectText(program, "mFrequencyText", "466.2Hz");
  expectText(program, "mIdealFrequencyText", "466.2Hz");
  keepPicture("b-flat");

  mic.play(440.0);
  EXPECT_TRUE(eventually([&] { return shows(program, "A4", Light::kGreen); })) << program.note();
  expectText(program, "mCentText", "±0");
  expectText(program, "mFrequencyText", "440.0Hz");
  expectText(program, "mFrequencyDiffText", "±0.0Hz");
  EXPECT_TRUE(eventually([&] {
    return lamp(program, "mFlat0") == Light::kGray && lamp(program, "mSharp0") == Light::kGray;
  }));
  expectNeverGray(program);
  keepPicture("a");

  // 25.5 cents above A.
  mic.play(446.53);
  EXPECT_TRUE(eventually([&] { return shows(program, "A4", Light::kBlue); })) << program.note();
  expectText(program, "mCentText", "+25");
  EXPECT_EQ(lamp(program, "mSharp0"), Light::kRed);
  EXPECT_EQ(lamp(program, "mSharp2"), Light::kRed);
  EXPECT_EQ(lamp(program, "mSharp3"), Light::kGray);
  EXPECT_EQ(lamp(program, "mFlat0"), Light::kGray);
  EXPECT_EQ(lamp(program, "mLevel0"), Light::kGreen);
  keepPicture("a-sharp-by-25");

  const auto end = Clock::now();
  mic.rest();
  EXPECT_TRUE(eventually([&] { return lamp(program, "mNatural") == Light::kGray; }));
  const auto until = Clock::now() - end;
  // The last block may have been heard a block's length before the end.
  EXPECT_GT(until, std::chrono::milliseconds(200 - 55));
  EXPECT_LT(until, std::chrono::seconds(2));
  EXPECT_EQ(program.note(), "A4");
  EXPECT_TRUE(program.text("mCentText").starts_with("+2")) << program.text("mCentText");
  EXPECT_EQ(lamp(program, "mSharp2"), Light::kRed);
  EXPECT_TRUE(eventually([&] { return lamp(program, "mLevel0") == Light::kGray; }));
  expectText(program, "mLevelText", "-96dB");
  keepPicture("silence-after-a");

  // Hidden it does not listen.
  const auto isHeard = [] {
    return PrivateServer::control({"list", "short", "source-outputs"}) != "";
  };
  EXPECT_TRUE(isHeard());
  const WindowId window = windows.active();
  input.key("Ctrl+h");
  EXPECT_TRUE(eventually([&] { return windows.isMinimized(window) && !isHeard(); }));
  windows.activate(window);
  mic.play(466.16);
  EXPECT_TRUE(eventually([&] { return shows(program, "B♭4", Light::kGreen); })) << program.note();
  EXPECT_TRUE(isHeard());
  EXPECT_EQ(program.standardError(), "");
}

TEST_P(OrvaneSoundTest, TheSliderMovesTheServersVolumeAndFollowsIt) {
  PrivateServer::control({"set-source-volume", "Mic", "50%"});
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  expectText(program, "mInputVolumeText", "50");
  EXPECT_EQ(program.object("mInputVolumeSlider").value(), 50.0);
  EXPECT_TRUE(program.object("mInputVolumeSlider").is(AccessibleState::kEnabled));

  PrivateServer::control({"set-source-volume", "Mic", "25%"});
  expectText(program, "mInputVolumeText", "25");
  EXPECT_EQ(program.object("mInputVolumeSlider").value(), 25.0);
  keepPicture("volume-25");

  const QRect slider = program.place("mInputVolumeSlider");
  input.click(slider.center());
  program.object("mInputVolumeSlider").grabFocus();
  input.key("Home");
  EXPECT_TRUE(eventually([] { return serverVolume() == 0; })) << serverVolume();
  expectText(program, "mInputVolumeText", "0");
  input.key("Right");
  input.key("Right");
  EXPECT_TRUE(eventually([] { return serverVolume() == 2; })) << serverVolume();
  expectText(program, "mInputVolumeText", "2");

  const QPoint knob(slider.left() + slider.height() / 3, slider.center().y());
  input.drag(knob, {slider.center().x(), knob.y()});
  EXPECT_TRUE(eventually([] { return serverVolume() > 30 && serverVolume() < 70; }))
      << serverVolume();
  EXPECT_TRUE(eventually([&] {
    return program.text("mInputVolumeText") == std::to_string(serverVolume());
  })) << program.text("mInputVolumeText")
      << " " << serverVolume();
  keepPicture("volume-dragged");
}

TEST_P(OrvaneSoundTest, AServerThatDiesAndReturnsTakesNothingWithIt) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  const std::string device = program.title("mInputDevicePopUpButton");
  program.enter("mReferencePitchText", "442");
  mic.play(220.0);
  expectNote(program, "A3");
  expectText(program, "mCentText", "-7");

  server.kill();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_EQ(program.note(), "A3");
  EXPECT_EQ(program.title("mInputDevicePopUpButton"), device);
  keepPicture("server-gone");

  ASSERT_TRUE(server.start());
  ASSERT_TRUE(loadSource("Mic"));
  mic.play(466.16);
  EXPECT_TRUE(eventually([&] { return program.note() == "B♭4"; })) << program.note();
  expectText(program, "mReferencePitchText", "442");
  expectTitle(program, "mInputDevicePopUpButton", device);
  keepPicture("server-back");
  EXPECT_TRUE(program.chooseMenu("Orvane", "Quit"));
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(storedSettings(desktop)["org.velmora.InputDeviceKey"], device);
}

class NoInputDeviceTest : public OrvaneTest {
 protected:
  void SetUp() override { ASSERT_TRUE(server.start()); }
};

INSTANTIATE_TEST_SUITE_P(Servers, NoInputDeviceTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire), nameOf);

TEST_P(NoInputDeviceTest, IsToldInAnAlertThatQuits) {
  OrvaneProgram program(desktop, tree);
  Accessible alert;
  const auto isShown = [&] {
    alert = program.application().findNamed(kNoDevice);
    return alert.is(AccessibleState::kShowing);
  };
  ASSERT_TRUE(eventually(isShown)) << program.standardError();
  keepPicture("no-input-device");
  const Accessible button = program.application().findNamed("OK", "push button");
  ASSERT_TRUE(button.exists());
  input.click(button.extents().center());
  EXPECT_EQ(program.wait(), 0) << program.standardError();
  auto stored = storedSettings(desktop);
  EXPECT_EQ(stored["ReferencePitchKey"], "440");
  EXPECT_EQ(stored["org.velmora.TuneSpeechKey"], "false");
  EXPECT_FALSE(stored.contains("org.velmora.InputDeviceKey"));
}

TEST_F(DesktopTest, ADeviceWithoutASettableVolumeShowsAFullSliderThatCannotBeMoved) {
  OrvaneProgram program(desktop, tree, {"--input", ORVANE_RESOURCES_DIR "/Recording.flac"});
  ASSERT_TRUE(program.opens()) << program.standardError();
  expectText(program, "mInputVolumeText", "n/a");
  const Accessible slider = program.object("mInputVolumeSlider");
  EXPECT_EQ(slider.value(), 100.0);
  EXPECT_FALSE(slider.is(AccessibleState::kEnabled));
  EXPECT_TRUE(screen.save("recording"));
}

}  // namespace
}  // namespace orvane::test
