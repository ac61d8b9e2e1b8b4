#include "app/DispatcherSpeech.h"

#include <signal.h>

#include <filesystem>
#include <fstream>

#include "tests/speech/SpeechRig.h"

namespace orvane::test {
namespace {

constexpr const char *kShort = "ay  , in tune";
constexpr const char *kShortLogged = "\"ay  , in tune\"";
constexpr const char *kReport =
    "ay   4, in tune, 440.0 hertz. Reference Pitch: 440 hertz. Transpose: off. Tuning: Just "
    "Intonation. Tonic: C sharp. Input Device: Built-in Audio Analog Stereo. Input Peak Level: -12 "
    "dB. ";

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

class DispatcherSpeechTest : public testing::Test {
 protected:
  // As the tuner does.
  void offer(const std::string &text) {
    if (!speech.isSpeaking())
      speech.startSpeakingString(text);
  }
  // Offers the text as often as the meter is updated, until this many texts have come in all.
  bool offerUntil(std::size_t count, milliseconds longest = seconds(15)) {
    auto next = Clock::now();
    return runUntil(
        [&] {
          if (Clock::now() >= next) {
            offer(kShort);
            next += milliseconds(55);
          }
          return service.texts().size() >= count;
        },
        longest);
  }
  bool fallsSilent(milliseconds longest) {
    return runUntil([this] { return !speech.isSpeaking(); }, longest);
  }

  FakeSpeechService service;
  DispatcherSpeech speech{QStringLiteral(ORVANE_SPEECH)};
};

TEST_F(DispatcherSpeechTest, GivesTheServiceExactlyTheTextsAndTellsWhenEachHasEnded) {
  ASSERT_TRUE(service.start("ok"));
  EXPECT_FALSE(speech.isSpeaking());
  const std::vector<std::string> texts = {kShort, "B flat, -12 cent, 466.2 hertz",
                                          ". begins and ends .", "Größe %1 <b>&amp;", kReport};
  for (const std::string &text : texts) {
    speech.startSpeakingString(text);
    EXPECT_TRUE(speech.isSpeaking());
    ASSERT_TRUE(fallsSilent(seconds(4))) << text;
  }
  std::vector<std::string> logged;
  for (const std::string &text : texts)
    logged.push_back('"' + text + '"');
  EXPECT_EQ(service.texts(), logged);
}

TEST_F(DispatcherSpeechTest, DropsWhatIsOfferedWhileItSpeaks) {
  ASSERT_TRUE(service.start("ok"));
  offer("first");
  offer("second");
  ASSERT_TRUE(fallsSilent(seconds(4)));
  runFor(milliseconds(300));
  offer("third");
  ASSERT_TRUE(fallsSilent(seconds(4)));
  EXPECT_EQ(service.texts(), (std::vector<std::string>{"\"first\"", "\"third\""}));
}

TEST_F(DispatcherSpeechTest, SpeaksAgainAfterTheServiceDiedOfAText) {
  ASSERT_TRUE(service.start("die"));
  offer("deadly");
  ASSERT_TRUE(fallsSilent(seconds(1)));
  // Meanwhile it keeps being asked.
  EXPECT_FALSE(offerUntil(2, seconds(6)));
  ASSERT_TRUE(service.start("ok"));
  EXPECT_TRUE(offerUntil(3, seconds(5)));
  EXPECT_EQ(service.texts()[1], kShortLogged);
}

TEST_F(DispatcherSpeechTest, SpeaksAgainAfterTheServiceDiedInTheMiddleOfAReport) {
  ASSERT_TRUE(service.start("stuck"));
  offer(kReport);
  ASSERT_TRUE(runUntil([this] { return service.texts().size() == 1; }));
  runFor(milliseconds(500));
  EXPECT_TRUE(speech.isSpeaking());
  service.kill();
  EXPECT_TRUE(fallsSilent(seconds(1)));
  ASSERT_TRUE(service.start("ok"));
  EXPECT_TRUE(offerUntil(2, seconds(5)));
}

TEST_F(DispatcherSpeechTest, SaysASingleTextAfterTheServiceWasRestartedInASilence) {
  ASSERT_TRUE(service.start("ok"));
  offer("before");
  ASSERT_TRUE(fallsSilent(seconds(4)));
  service.kill();
  runFor(milliseconds(200));
  ASSERT_TRUE(service.start("ok"));
  offer("after");
  EXPECT_TRUE(runUntil([this] { return service.texts().back() == "\"after\""; }, seconds(5)));
}

TEST_F(DispatcherSpeechTest, WaitsForTheEndThatATextShouldHaveButNotMuchLonger) {
  // A voice takes 1.2 to 2.9 s for the text.
  for (const char *mode : {"noend", "stuck"}) {
    ASSERT_TRUE(service.start(mode));
    const std::size_t before = service.texts().size();
    ASSERT_TRUE(offerUntil(before + 1)) << mode;
    const auto said = Clock::now();
    ASSERT_TRUE(offerUntil(before + 2)) << mode;
    EXPECT_GT(secondsSince(said), 2.9) << mode;
    EXPECT_LT(secondsSince(said), 1.2 + 5.0) << mode;
    service.kill();
    ASSERT_TRUE(fallsSilent(seconds(1)));
  }
}

TEST_F(DispatcherSpeechTest, NeitherCutsOffNorOverlapsATextOfHalfAMinute) {
  const std::string text = std::string(kReport) + std::string(kReport).substr(0, 120);
  EXPECT_GT(DispatcherSpeech::expectedDuration(text).count(), 27.0);
  EXPECT_LT(DispatcherSpeech::expectedDuration(text).count(), 33.0);
  ASSERT_TRUE(service.start("ok:30"));
  offer(text);
  ASSERT_TRUE(runUntil([this] { return service.texts().size() == 1; }));
  const auto begun = Clock::now();
  ASSERT_TRUE(offerUntil(2, seconds(40)));
  EXPECT_GT(secondsSince(begun), 29.9);
  EXPECT_LT(secondsSince(begun), 31.0);
  EXPECT_EQ(service.texts(), (std::vector<std::string>{'"' + text + '"', kShortLogged}));
}

TEST_F(DispatcherSpeechTest, SpeaksAgainThreeSecondsAfterAReportShouldHaveEnded) {
  ASSERT_TRUE(service.start("noend"));
  offer(kReport);
  ASSERT_TRUE(runUntil([this] { return service.texts().size() == 1; }));
  const auto begun = Clock::now();
  ASSERT_TRUE(offerUntil(2, seconds(40)));
  // A voice takes 16.7 s for it; another program has to be started first.
  EXPECT_GT(secondsSince(begun), 16.7);
  EXPECT_LT(secondsSince(begun), DispatcherSpeech::expectedDuration(kReport).count() + 3.0 + 0.5);
  RecordProperty("speaks again after milliseconds", static_cast<int>(1e3 * secondsSince(begun)));
}

TEST_F(DispatcherSpeechTest, NeverWaitsForAHungServiceAndSpeaksWhenItIsBack) {
  ASSERT_TRUE(service.start("ok"));
  offer("before");
  ASSERT_TRUE(fallsSilent(seconds(4)));
  service.signal(SIGSTOP);
  double longest = 0.0;
  const auto end = Clock::now() + seconds(14);  // several texts are given up
  while (Clock::now() < end) {
    const auto start = Clock::now();
    offer(kShort);
    longest = std::max(longest, secondsSince(start));
    runFor(milliseconds(50));
  }
  EXPECT_LT(longest, 0.25);
  service.signal(SIGCONT);
  const std::size_t before = service.texts().size();
  EXPECT_TRUE(offerUntil(before + 2, seconds(5)));
}

TEST_F(DispatcherSpeechTest, EndsAtOnceThoughTheServiceHangs) {
  ASSERT_TRUE(service.start("ok"));
  service.signal(SIGSTOP);
  const auto start = Clock::now();
  {
    DispatcherSpeech hung(QStringLiteral(ORVANE_SPEECH));
    hung.startSpeakingString(kShort);
    runFor(milliseconds(300));
  }
  EXPECT_LT(secondsSince(start), 1.2);
}

TEST_F(DispatcherSpeechTest, SaysNothingWithoutAServiceAndSeldomLooksForOne) {
  const std::string helper = service.path("helper");
  std::ofstream(helper) << "#!/bin/sh\necho >>" << service.path("starts") << "\nexit 1\n";
  std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
  DispatcherSpeech mute(QString::fromStdString(helper));
  runFor(milliseconds(100));
  EXPECT_FALSE(std::filesystem::exists(service.path("starts")));
  const auto end = Clock::now() + seconds(4);
  double longest = 0.0;
  while (Clock::now() < end) {
    const auto start = Clock::now();
    if (!mute.isSpeaking())
      mute.startSpeakingString(kShort);
    longest = std::max(longest, secondsSince(start));
    runFor(milliseconds(20));
  }
  EXPECT_LT(longest, 0.25);
  // At 0, 0.1, 0.3, 0.7, 1.5 and 3.1 s, but for what each takes to start.
  const auto starts = std::filesystem::file_size(service.path("starts"));
  EXPECT_GE(starts, 3U);
  EXPECT_LE(starts, 6U);
}

TEST_F(DispatcherSpeechTest, SaysNothingWithoutItsHelper) {
  DispatcherSpeech mute(QStringLiteral("/nonexistent/helper"));
  mute.startSpeakingString(kShort);
  EXPECT_TRUE(runUntil([&] { return !mute.isSpeaking(); }, seconds(1)));
}

// Measured with the service's usual voice.
TEST(DispatcherSpeechDuration, IsExpectedAtLittleMoreThanAVoiceTakes) {
  const std::vector<std::pair<std::string, double>> measured = {
      {kShort, 1.2}, {"F sharp, +12 cent, 1108.7 hertz", 5.0}, {kReport, 16.7}};
  for (const auto &[text, duration] : measured) {
    const double expected = DispatcherSpeech::expectedDuration(text).count();
    EXPECT_GE(expected, duration) << text;
    EXPECT_LE(expected, duration + 2.0) << text;
  }
}

}  // namespace
}  // namespace orvane::test
