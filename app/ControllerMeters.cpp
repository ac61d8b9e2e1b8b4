// The controller's display: the tick that each capture block drives, the note, the lamp row and the
// level meter.
#include <chrono>
#include <utility>

#include "app/Controller.h"
#include "core/SignedText.h"

namespace orvane {
namespace {

constexpr int kFullScale = 96;  // level, in steps of a decibel

// Seconds on a clock that no setting of the time of day can turn.
double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

QString text(const std::string &value) {
  return QString::fromStdString(value);
}

}  // namespace

void Controller::takeBlocks() {
  mWakeUp.clear();
  while (std::optional<CaptureBlock> block = mBlocks.take())
    updateUI(std::move(*block));
}

void Controller::updateUI(CaptureBlock block) {
  mLoop.updateUI(std::move(block), now());
}

void Controller::grayCentreLamp() {
  mNatural->setImage(mGray28x28);
  describeCentreLamp(CentreLamp::Gray);
}

void Controller::updateTunerUI() {
  const auto reading = noteReading(mLoop.mFrequency, mSettings, mTables);
  if (!reading)
    return;
  describeNote(reading->texts);
  mNoteText->setStringValue(text(reading->texts.mNoteText));
  mAccidentalText->setHidden(reading->texts.mAccidentalText == " ");
  mAccidentalText->setStringValue(text(reading->texts.mAccidentalText));
  mOctaveText->setStringValue(text(reading->texts.mOctaveText));
  setTuningMeter(reading->deviation);
  mTuningMeterView->setCent(reading->cents);
  if (disclosed) {
    mFrequencyText->setStringValue(text(hertzString(mLoop.mFrequency)));
    mFrequencyDiffText->setStringValue(text(plusMinusFloatString(reading->difference)));
    mIdealFrequencyText->setStringValue(text(hertzString(reading->idealFrequency)));
  }
  mLoop.mDisplayFrequency = mLoop.mFrequency;
}

void Controller::setTuningMeter(float semitones) {
  const LampRow row = lampRow(semitones);
  mNatural->setImage(row.natural == CentreLamp::Green ? mGreen28x28 : mBlue28x28);
  describeDeviation(row);

  const auto light = [this](const auto &lamps, const auto &lit) {
    for (std::size_t i = lamps.size(); i-- > 0;)
      lamps[i]->setImage(lit[i] ? mRed24x24 : mGray24x24);
  };
  if (row.cents < 0) {
    light(mFlats, row.flat);
    light(mSharps, row.sharp);
  } else {
    light(mSharps, row.sharp);
    light(mFlats, row.flat);
  }
  mCentText->setStringValue(text(plusMinusValueString(row.cents)));
  speakContinuously();
}

void Controller::setLevelMeter() {
  mLoop.mDisplayPeak = mDetector.mPeak;
  mLoop.mDisplayPeakHold = mLoop.mPeakHold;
  if (!disclosed)
    return;
  const LevelSegments segments = levelSegments(mDetector.mPeak, mLoop.mPeakHold);
  for (std::size_t i = segments.size(); i-- > 0;)
    mLevels[i]->setImage(picture(segments[i]));
  mLevelText->setStringValue(text(levelText(mLoop.mPeakHold)));
  mLevelMeter->setValue(static_cast<int>(mDetector.mPeak) - kFullScale);
}

const std::shared_ptr<const Picture> &Controller::picture(LevelSegment segment) const {
  switch (segment) {
    case LevelSegment::Green:
      return mGreen16x16;
    case LevelSegment::Yellow:
      return mYellow16x16;
    case LevelSegment::Red:
      return mRed16x16;
    case LevelSegment::Gray:
      break;
  }
  return mGray16x16;
}

}  // namespace orvane
