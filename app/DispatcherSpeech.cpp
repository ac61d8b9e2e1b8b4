#include "app/DispatcherSpeech.h"

#include <algorithm>
#include <cctype>

#include "app/SpeechHelperEvents.h"

namespace orvane {
namespace {

using Seconds = DispatcherSpeech::Seconds;

// The service may have to be started first.
constexpr Seconds kLongestConnecting{10.0};
constexpr Seconds kPatience{3.0};
constexpr std::chrono::milliseconds kFarewell{300};
constexpr double kSlowestVoice = 4.0;

}  // namespace

DispatcherSpeech::DispatcherSpeech(const QString &helper) {
  mHelper.setProgram(helper);
  mHelper.setStandardErrorFile(QProcess::nullDevice());
  QObject::connect(&mHelper, &QProcess::readyReadStandardOutput, &mHelper,
                   [this] { readEvents(); });
  QObject::connect(&mHelper, &QProcess::stateChanged, &mHelper,
                   [this](QProcess::ProcessState state) {
                     if (state == QProcess::NotRunning)
                       helperEnded();
                   });
}

DispatcherSpeech::~DispatcherSpeech() {
  if (mHelper.state() == QProcess::NotRunning)
    return;
  mHelper.closeWriteChannel();
  if (isSpeaking())
    mHelper.waitForFinished(static_cast<int>(kFarewell.count()));
  killHelper();
}

bool DispatcherSpeech::isSpeaking() const {
  return mIsTextUnderWay && Clock::now() < mGivenUpAt;
}

void DispatcherSpeech::startSpeakingString(const std::string &string) {
  if (mIsTextUnderWay)
    killHelper();
  if (mHelper.state() == QProcess::NotRunning) {
    if (Clock::now() < mNextStart)
      return;
    startHelper();
  }
  mExpected = expectedDuration(string) * mSlowness;
  mIsTextUnderWay = true;
  mBegunAt = {};
  extend(mIsConnected ? mExpected : kLongestConnecting);
  mHelper.write(string.c_str(), static_cast<qint64>(string.size()) + 1);
}

Seconds DispatcherSpeech::expectedDuration(const std::string &string) {
  constexpr Seconds kStart{1.0};
  constexpr Seconds kCharacter{0.08};
  constexpr Seconds kDigit{0.25};  // besides, because it is a whole word
  const auto digits = std::count_if(string.begin(), string.end(),
                                    [](unsigned char c) { return std::isdigit(c) != 0; });
  return kStart + kCharacter * static_cast<double>(string.size()) +
         kDigit * static_cast<double>(digits);
}

void DispatcherSpeech::startHelper() {
  mIsConnected = false;
  mHelper.start();
}

void DispatcherSpeech::killHelper() {
  mHelper.kill();
  // Killed, it ends at once.
  mHelper.waitForFinished(1000);
}

void DispatcherSpeech::readEvents() {
  for (const char event : mHelper.readAllStandardOutput()) {
    if (event == kSpeechConnected) {
      mIsConnected = true;
      mRetryDelay.reset();
      extend(mExpected);
    } else if (event == kSpeechBegun) {
      mBegunAt = Clock::now();
      extend(mExpected);
    } else if (event == kSpeechEnded && mIsTextUnderWay) {
      const Seconds actual = Clock::now() - mBegunAt;
      mSlowness = std::clamp(mSlowness * (actual / mExpected), 1.0, kSlowestVoice);
      mIsTextUnderWay = false;
    }
  }
}

void DispatcherSpeech::helperEnded() {
  mIsTextUnderWay = false;
  if (!mIsConnected)
    mNextStart = Clock::now() + mRetryDelay.next();
}

void DispatcherSpeech::extend(Seconds duration) {
  mGivenUpAt = Clock::now() + std::chrono::duration_cast<Clock::duration>(duration + kPatience);
}

}  // namespace orvane
