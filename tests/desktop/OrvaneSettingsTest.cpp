// What the window program keeps from one start to the next, however it ends.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using Settings = std::map<std::string, std::string>;

class OrvaneSettingsTest : public OrvaneTest {
 protected:
  bool isMarked(const OrvaneProgram &program, const std::string &menu, const std::string &item) {
    const bool isMarked = program.openMenu(menu, item).is(AccessibleState::kChecked);
    input.key("Escape");
    return isMarked;
  }
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneSettingsTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire), nameOf);

TEST_P(OrvaneSettingsTest, AllAreStoredAtQuitAndRestoredAtTheNextStart) {
  ASSERT_TRUE(loadSource("Line"));
  Settings changed;
  std::string device;
  {
    OrvaneProgram program(desktop, tree);
    ASSERT_TRUE(program.opens()) << program.standardError();
    const std::vector<std::string> temperaments = program.titles("mTuningPopUpButton");
    const std::vector<std::string> transpositions = program.titles("mTransposePopUpButton");
    const std::vector<std::string> devices = program.titles("mInputDevicePopUpButton");
    ASSERT_EQ(transpositions.size(), 23U);
    ASSERT_EQ(devices.size(), 2U);
    device = devices[1];
    program.enter("mReferencePitchText", "442.5");
    ASSERT_TRUE(program.choose("mTuningPopUpButton", temperaments[4]));
    const std::vector<std::string> tonics = program.titles("mTonicPopUpButton");
    ASSERT_EQ(tonics.size(), 12U);
    ASSERT_TRUE(program.choose("mTonicPopUpButton", tonics[7]));
    ASSERT_TRUE(program.choose("mTransposePopUpButton", transpositions[11 - 3]));
    ASSERT_TRUE(program.choose("mInputDevicePopUpButton", device));
    ASSERT_TRUE(program.chooseMenu("Speech", "Speak Note Continuously"));
    ASSERT_TRUE(program.chooseMenu("Speech", "Speak Frequency Continuously"));
    keepPicture("settings-changed");
    windows.close(windows.find(kMeterWindow));
    const QRect open = windows.frame(windows.find(kMainWindow));
    program.click("mDisclosureButton");
    EXPECT_TRUE(eventually(
        [&] { return windows.frame(windows.find(kMainWindow)).height() < open.height() - 200; }));
    EXPECT_EQ(windows.frame(windows.find(kMainWindow)).topLeft(), open.topLeft());
    keepPicture("settings-changed-collapsed");
    ASSERT_TRUE(program.chooseMenu("Orvane", "Quit"));
    EXPECT_EQ(program.wait(), 0);

    // The first item is equal temperament and the second a divider, so the fifth is the third
    // temperament.
    changed = {{"ReferencePitchKey", "442.5"},
               {"TuningKey", "3"},
               {"TonicKey", "7"},
               {"org.velmora.TransposeKey", "-3"},
               {"DisclosedKey", "false"},
               {"org.velmora.TunerMeterKey", "false"},
               {"org.velmora.InputDeviceKey", device},
               {"org.velmora.TuneSpeechKey", "true"},
               {"org.velmora.HertzSpeechKey", "true"}};
    EXPECT_EQ(storedSettings(desktop), changed);
  }
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  EXPECT_LT(windows.frame(windows.find(kMainWindow)).height(), 300);
  EXPECT_EQ(windows.find(kMeterWindow), 0U);
  keepPicture("settings-restored-collapsed");
  EXPECT_TRUE(isMarked(program, "Speech", "Speak Note Continuously"));
  EXPECT_TRUE(isMarked(program, "Speech", "Speak Frequency Continuously"));
  program.click("mDisclosureButton");
  EXPECT_TRUE(eventually([&] { return windows.frame(windows.find(kMainWindow)).height() > 400; },
                         kPatience));
  EXPECT_EQ(program.title("mInputDevicePopUpButton"), device);
  EXPECT_EQ(program.text("mReferencePitchText"), "442.5");
  EXPECT_EQ(program.title("mTuningPopUpButton"), program.titles("mTuningPopUpButton")[4]);
  EXPECT_TRUE(program.title("mTonicPopUpButton").starts_with("G ("));
  EXPECT_EQ(program.text("mTransposeText"), "C = A (-3)");
  keepPicture("settings-restored");
  program.click("mDisclosureButton");
  EXPECT_TRUE(eventually([&] { return windows.frame(windows.find(kMainWindow)).height() < 300; },
                         kPatience));
  input.key("Ctrl+q");
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(storedSettings(desktop), changed);
}

TEST_P(OrvaneSettingsTest, EveryWayToQuitStoresThem) {
  using Quit = std::function<void(const OrvaneProgram &)>;
  const auto bySignal = [](int number) -> Quit {
    return [number](const OrvaneProgram &program) { program.signal(number); };
  };
  const std::vector<std::pair<std::string, Quit>> ways = {
      {"441",
       [this](const OrvaneProgram &) {
         windows.close(windows.find(kMeterWindow));
         EXPECT_TRUE(eventually([this] { return windows.find(kMeterWindow) == 0; }));
         windows.close(windows.find(kMainWindow));
       }},
      {"442", bySignal(SIGTERM)},
      {"443", bySignal(SIGINT)},
      {"444", bySignal(SIGHUP)}};
  std::string before = "440";
  for (const auto &[pitch, quit] : ways) {
    OrvaneProgram program(desktop, tree);
    ASSERT_TRUE(program.opens()) << program.standardError();
    EXPECT_EQ(program.text("mReferencePitchText"), before);
    program.enter("mReferencePitchText", pitch);
    expectText(program, "mIdealFrequencyText", pitch + ".0Hz");
    quit(program);
    EXPECT_EQ(program.wait(), 0) << pitch << ": " << program.standardError();
    EXPECT_EQ(storedSettings(desktop)["ReferencePitchKey"], pitch);
    before = pitch;
  }
}

TEST_P(OrvaneSettingsTest, TheLossOfTheDisplayStoresThemToo) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  program.enter("mReferencePitchText", "445");
  expectText(program, "mIdealFrequencyText", "445.0Hz");
  windows.killClient(windows.find(kMainWindow));
  program.wait();
  EXPECT_EQ(storedSettings(desktop)["ReferencePitchKey"], "445");
  EXPECT_EQ(storedSettings(desktop)["org.velmora.TunerMeterKey"], "true");
}

}  // namespace
}  // namespace orvane::test
