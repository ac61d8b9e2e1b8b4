#include "cli/TerminalTuner.h"

#include <utility>

namespace orvane {

TerminalTuner::TerminalTuner(const Tuning &tuning, WakeUp *wakeUp)
    : mTuning(tuning),
      mQueue(wakeUp),
      mCapture(mQueue),
      mDetector(mCapture),
      mLoop(mDetector, *this),
      mDisplay{} {
  mLoop.mFrequency = tuning.settings.mReferencePitch;
  updateTunerUI();
  setLevelMeter();
}

std::optional<Reading> TerminalTuner::takeReading(double now) {
  std::optional<CaptureBlock> block = mQueue.take();
  if (!block)
    return std::nullopt;
  const UpdateLoop::Tick tick = mLoop.updateUI(std::move(*block), now);
  return Reading{mBlocks++,
                 now,
                 tick.detected ? std::optional(tick.rawFrequency) : std::nullopt,
                 tick.accepted,
                 mDetector.mRawPeak,
                 mDetector.mPeak,
                 tick.peakHold,
                 mLoop.mFrequency,
                 mDisplay};
}

void TerminalTuner::updateTunerUI() {
  const auto reading = noteReading(mLoop.mFrequency, mTuning.settings, mTuning.tables);
  if (!reading)
    return;
  mDisplay.texts = reading->texts;
  mDisplay.noteNumber = reading->noteNumber;
  mDisplay.lamps = lampRow(reading->deviation);
  mDisplay.centre = mDisplay.lamps.natural;
  mDisplay.deviation = reading->deviation;
  mDisplay.frequency = mLoop.mFrequency;
  mDisplay.idealFrequency = reading->idealFrequency;
  mDisplay.difference = reading->difference;
  mLoop.mDisplayFrequency = mLoop.mFrequency;
}

void TerminalTuner::grayCentreLamp() {
  mDisplay.centre = CentreLamp::Gray;
}

void TerminalTuner::setLevelMeter() {
  mLoop.mDisplayPeak = mDetector.mPeak;
  mLoop.mDisplayPeakHold = mLoop.mPeakHold;
  mDisplay.segments = levelSegments(mDetector.mPeak, mLoop.mPeakHold);
  mDisplay.levelText = levelText(mLoop.mPeakHold);
}

}  // namespace orvane
