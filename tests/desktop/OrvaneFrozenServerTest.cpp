// The window program while the sound server does not answer: it goes on answering itself, and hears
// again as soon as the server does. A long run says for how many seconds the server is frozen.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "tests/desktop/OrvaneRig.h"
#include "tests/long/LongRun.h"

namespace orvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Below what a person takes for a hesitation.
constexpr milliseconds kLongestAnswer{100};
// What the tuner promises, from the server's thawing on.
constexpr milliseconds kLongestRecovery{2000};

milliseconds since(Clock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

class OrvaneFrozenServerTest : public OrvaneTest {
 protected:
  // Asks, or has something done, and remembers the longest time that the program took to answer.
  template <typename Question>
  auto timed(Question question) {
    const auto asked = Clock::now();
    const auto answer = question();
    longest = std::max(longest, since(asked));
    return answer;
  }

  // Asks for the text again and again.
  void keepAsking(const Accessible &text, milliseconds time) {
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
      EXPECT_NE(timed([&] { return text.text(); }), "");
      std::this_thread::sleep_for(milliseconds(20));
    }
  }

  milliseconds longest{0};
};

INSTANTIATE_TEST_SUITE_P(Servers, OrvaneFrozenServerTest,
                         testing::Values(PrivateServer::Kind::kPulseAudio,
                                         PrivateServer::Kind::kPipeWire),
                         nameOf);

TEST_P(OrvaneFrozenServerTest, TheWindowGoesOnAnsweringAndHearsAgainAfterwards) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  mic.play(392.0);
  expectNote(program, "G4");
  const Accessible pitch = program.object("mReferencePitchText");
  ASSERT_EQ(pitch.text(), "440");
  const Accessible volume = program.object("mInputVolumeSlider");
  const Accessible volumeText = program.object("mInputVolumeText");

  const milliseconds frozen = std::chrono::seconds(longRunCount(3));
  server.freeze();
  // A command that the server owes an answer to, so that the connection is given up in the end.
  ASSERT_TRUE(timed([&] { return volume.setValue(50.0); }));
  keepAsking(pitch, frozen / 2);
  // And a change by hand meanwhile, which is taken at once.
  ASSERT_TRUE(timed([&] { return volume.setValue(60.0); }));
  EXPECT_TRUE(eventually([&] { return timed([&] { return volumeText.text(); }) == "60"; }));
  keepAsking(pitch, frozen / 2);
  EXPECT_LE(longest.count(), kLongestAnswer.count());
  EXPECT_EQ(program.note(), "G4");
  keepPicture("server-frozen");

  mic.play(466.16);
  server.thaw();
  const auto thawed = Clock::now();
  EXPECT_TRUE(eventually([&] { return program.note() == "B♭4"; })) << program.note();
  const milliseconds recovery = since(thawed);
  EXPECT_LE(recovery.count(), kLongestRecovery.count());
  std::printf("frozen %lld s: answers took at most %lld ms; heard again after %lld ms\n",
              static_cast<long long>(frozen.count() / 1000),
              static_cast<long long>(longest.count()), static_cast<long long>(recovery.count()));
  EXPECT_EQ(program.standardError(), "");
}

}  // namespace
}  // namespace orvane::test
