// The controller's tuning controls: reference pitch, temperament, tonic and transposition.
#include "app/Controller.h"
#include "core/TuningControls.h"

namespace orvane {
namespace {

constexpr int kPitchClassCount = 12;

}  // namespace

void Controller::referencePitchUpDown() {
  mSettings.mReferencePitch = mReferencePitchStepper->floatValue();
  mReferencePitchText->setFloatValue(mSettings.mReferencePitch);
  updateTonicMenu();
  updateTunerUI();
}

void Controller::referencePitchChanged() {
  const float typed = mReferencePitchText->floatValue();
  if (typed == mSettings.mReferencePitch)
    return;
  const ReferencePitchEntry entry = acceptedReferencePitch(typed);
  if (entry.beeps)
    mSystem.beep();
  mSettings.mReferencePitch = entry.value;
  mReferencePitchText->setFloatValue(entry.value);
  mReferencePitchStepper->setFloatValue(entry.value);
  updateTonicMenu();
  updateTunerUI();
}

void Controller::tuningPopupChanged() {
  const std::int64_t item = mTuningPopUpButton->indexOfSelectedItem();
  const std::int64_t tuning = tuningOfItem(item);
  if (tuning == mSettings.mTuning)
    return;
  mSettings.mTuning = tuning;
  mTonicPopUpButton->setEnabled(item >= 2);
  updateTonicMenu();
  updateTunerUI();
}

void Controller::tonicPopupChanged() {
  const std::int64_t tonic = mTonicPopUpButton->indexOfSelectedItem();
  if (tonic == mSettings.mTonic)
    return;
  mSettings.mTonic = tonic;
  updateTonicMenu();
  updateTunerUI();
}

void Controller::transposePopupChanged() {
  const std::int64_t transpose = transposeOfItem(mTransposePopUpButton->indexOfSelectedItem());
  if (transpose == mSettings.mTranspose)
    return;
  mSettings.mTranspose = transpose;
  updateTransposeText();
  updateTonicMenu();
  updateTunerUI();
}

void Controller::updateTonicMenu() {
  mTonicPopUpButton->removeAllItems();
  for (int pitchClass = 0; pitchClass < kPitchClassCount; ++pitchClass)
    mTonicPopUpButton->addItemWithTitle(
        QString::fromStdString(tonicTitle(pitchClass, mSettings, mTables)));
  mTonicPopUpButton->selectItemAtIndex(static_cast<int>(mSettings.mTonic));
}

void Controller::updateTransposeText() {
  const std::string text = transposeText(mSettings.mTranspose);
  mTransposeText->setHidden(mSettings.mTranspose == 0);
  mTransposeText->setStringValue(QString::fromStdString(text));
}

}  // namespace orvane
