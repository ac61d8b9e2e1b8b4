// The real speech service, heard.
#include <algorithm>
#include <fstream>

#include "app/DispatcherSpeech.h"
#include "tests/servers/PrivateServer.h"
#include "tests/speech/SpeechRig.h"

namespace orvane::test {
namespace {

constexpr const char *kReport =
    "F sharp 4, +12 cent, 372.5 hertz. Reference Pitch: 440 hertz. Transpose: off. Tuning: Just "
    "Intonation. Tonic: C sharp. Input Device: Built-in Audio Analog Stereo. Input Peak Level: -12 "
    "dB. ";

class SpeechServiceTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(service.start());
    recorder = ChildProcess({"parec", "-d", "feed.monitor", "--format=s16le", "--rate=8000",
                             "--channels=1", "--latency-msec=20", service.path("sound")});
    ASSERT_TRUE(runUntil([this] { return !sound().empty(); }));
  }

  std::vector<std::int16_t> sound() const {
    std::ifstream file(service.path("sound"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::int16_t> samples(bytes.size() / 2);
    std::copy_n(bytes.data(), samples.size() * 2, reinterpret_cast<char *>(samples.data()));
    return samples;
  }
  // Something louder than a hundredth of full scale since that sample.
  bool isHeardSince(std::size_t sample) const {
    const std::vector<std::int16_t> samples = sound();
    return samples.size() > sample &&
           std::any_of(samples.begin() + static_cast<std::ptrdiff_t>(sample), samples.end(),
                       [](std::int16_t value) { return value > 327 || value < -327; });
  }

  PrivateServer server{PrivateServer::Kind::kPulseAudio};
  RealSpeechService service;
  DispatcherSpeech speech{QStringLiteral(ORVANE_SPEECH)};
  ChildProcess recorder;
};

TEST_F(SpeechServiceTest, ATextIsHeardWhileItIsSpokenAndThenItIsSilent) {
  runFor(milliseconds(500));
  EXPECT_FALSE(isHeardSince(0));
  speech.startSpeakingString("ay  , in tune, 440.0 hertz");
  EXPECT_TRUE(runUntil([this] { return isHeardSince(0); }));
  EXPECT_TRUE(speech.isSpeaking());
  ASSERT_TRUE(runUntil([this] { return !speech.isSpeaking(); }));
  runFor(milliseconds(700));
  const std::size_t end = sound().size();
  runFor(milliseconds(500));
  EXPECT_FALSE(isHeardSince(end));
}

TEST_F(SpeechServiceTest, ALongReportIsSpokenToItsEnd) {
  speech.startSpeakingString(kReport);
  ASSERT_TRUE(runUntil([this] { return isHeardSince(0); }));
  const auto begin = Clock::now();
  ASSERT_TRUE(runUntil([this] { return !speech.isSpeaking(); }, seconds(40)));
  // Its end was reported: it took as long as this voice takes, not as long as it may take.
  const DispatcherSpeech::Seconds duration = Clock::now() - begin;
  EXPECT_GT(duration.count(), 14.0);
  EXPECT_LT(duration.count(), 20.0);
}

TEST_F(SpeechServiceTest, ItSpeaksAgainOnceAKilledServiceIsBack) {
  speech.startSpeakingString(kReport);
  ASSERT_TRUE(runUntil([this] { return isHeardSince(0); }));
  service.kill();
  ASSERT_TRUE(runUntil([this] { return !speech.isSpeaking(); }, seconds(1)));
  runFor(seconds(2));
  ASSERT_TRUE(service.start());
  const std::size_t back = sound().size();
  const auto offered = [this] {
    if (!speech.isSpeaking())
      speech.startSpeakingString("ay  , in tune");
    return true;
  };
  EXPECT_TRUE(runUntil([&] { return offered() && isHeardSince(back); }, seconds(5)));
}

TEST_F(SpeechServiceTest, NothingMoreIsHeardOnceTheTunerHasEnded) {
  {
    DispatcherSpeech ending(QStringLiteral(ORVANE_SPEECH));
    ending.startSpeakingString(kReport);
    ASSERT_TRUE(runUntil([this] { return isHeardSince(0); }));
  }
  runFor(seconds(1));
  const std::size_t end = sound().size();
  runFor(seconds(1));
  EXPECT_FALSE(isHeardSince(end));
}

}  // namespace
}  // namespace orvane::test
