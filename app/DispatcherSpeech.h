// The desktop's speech service, in its default voice, through a helper program that is started with
// the first text. Whatever becomes of the service or the helper, no call waits for either.
//
// A text that is not reported to have ended is given up a few seconds after it should have; then,
// and when the connection is lost, the next text goes over a new one. Without a service texts are
// dropped, and a connection is tried again at most every 1.6 s. Main thread, with an event loop.
#pragma once

#include <chrono>

#include <QProcess>

#include "app/SpeechSynthesizer.h"
#include "audio/RetryDelay.h"

namespace orvane {

class DispatcherSpeech : public SpeechSynthesizer {
 public:
  using Seconds = std::chrono::duration<double>;

  // The helper's file; none need be there.
  explicit DispatcherSpeech(const QString &helper);
  // Cuts off what is being said. Waits at most 0.3 s for the service to take notice.
  ~DispatcherSpeech() override;

  bool isSpeaking() const override;
  void startSpeakingString(const std::string &string) override;

  // How long a voice of ordinary speed takes to say the text, rather too much than too little.
  static Seconds expectedDuration(const std::string &string);

 private:
  using Clock = std::chrono::steady_clock;

  void startHelper();
  void killHelper();
  void readEvents();
  void helperEnded();
  // How much longer the text under way may take, from now on.
  void extend(Seconds duration);

  QProcess mHelper;
  RetryDelay mRetryDelay;
  Clock::time_point mNextStart{};  // of the helper
  bool mIsConnected = false;
  bool mIsTextUnderWay = false;
  Seconds mExpected{};             // of the text under way, in this voice
  Clock::time_point mGivenUpAt{};  // if it is still under way then
  Clock::time_point mBegunAt{};
  double mSlowness = 1.0;  // of this voice, against expectedDuration
};

}  // namespace orvane
