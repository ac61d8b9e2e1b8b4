// The controller's speech: what the windows show, in words.
#include <array>

#include <QTimer>

#include "app/Controller.h"
#include "core/TuningControls.h"

namespace orvane {
namespace {

constexpr int kInTune = 2;  // cents
constexpr std::array<const char *, 12> kTonicNames = {
    "C", "C sharp", "D", "E flat", "E", "F", "F sharp", "G", "G sharp", "ay", "B flat", "B"};

QString withSign(int value) {
  return (value < 0 ? QString() : QStringLiteral("+")) + QString::number(value);
}

}  // namespace

void Controller::speak(const QString &string) {
  if (mSpeech == nullptr)
    mSpeech = mSystem.makeSpeechSynthesizer();
  if (!mSpeech->isSpeaking())
    mSpeech->startSpeakingString(string.toStdString());
}

QString Controller::tuneSpeech(bool withOctave) const {
  const NoteTexts note{mNoteText->stringValue().toStdString(),
                       mAccidentalText->stringValue().toStdString(),
                       mOctaveText->stringValue().toStdString()};
  const int cents = mCentText->intValue();
  const QString deviation = cents >= -kInTune && cents <= kInTune
                                ? QStringLiteral("in tune")
                                : withSign(cents) + QStringLiteral(" cent");
  return QString::fromStdString(noteName(withOctave, note)) + QStringLiteral(", ") + deviation;
}

QString Controller::hertzSpeech() const {
  const auto hertz = static_cast<double>(mFrequencyText->floatValue());
  return QString::number(hertz, 'f', 1) + QStringLiteral(" hertz");
}

void Controller::speakStatusTimer() {
  speak(tuneSpeech(false) + QStringLiteral(", ") + hertzSpeech());
}

void Controller::speakDetailsTimer() {
  QString report = tuneSpeech(true) + QStringLiteral(", ") + hertzSpeech() + QStringLiteral(". ");
  const auto add = [&report](const QString &title, const QString &value) {
    report += title + QStringLiteral(": ") + value + QStringLiteral(". ");
  };
  add(QStringLiteral("Reference Pitch"),
      mReferencePitchText->stringValue() + QStringLiteral(" hertz"));
  const auto transpose =
      static_cast<int>(transposeOfItem(mTransposePopUpButton->indexOfSelectedItem()));
  add(QStringLiteral("Transpose"), transpose == 0 ? QStringLiteral("off") : withSign(transpose));
  add(QStringLiteral("Tuning"), mTuningPopUpButton->titleOfSelectedItem());
  if (mTuningPopUpButton->indexOfSelectedItem() != 0)
    add(QStringLiteral("Tonic"), QString::fromLatin1(kTonicNames.at(static_cast<std::size_t>(
                                     mTonicPopUpButton->indexOfSelectedItem()))));
  add(QStringLiteral("Input Device"), mInputDevicePopUpButton->titleOfSelectedItem());
  add(QStringLiteral("Input Peak Level"),
      QString::number(mLevelText->intValue()) + QStringLiteral(" dB"));
  speak(report);
}

void Controller::speakContinuously() {
  if (mTuneSpeech && mHertzSpeech)
    speak(tuneSpeech(false) + QLatin1Char(' ') + hertzSpeech());
  else if (mTuneSpeech)
    speak(tuneSpeech(false));
  else if (mHertzSpeech)
    speak(hertzSpeech());
}

void Controller::iaSpeakStatus() {
  QTimer::singleShot(0, this, &Controller::speakStatusTimer);
}

void Controller::iaSpeakDetails() {
  QTimer::singleShot(0, this, &Controller::speakDetailsTimer);
}

void Controller::iaSpeakTune() {
  mTuneSpeech = !mTuneSpeech;
  validateMenus();
}

void Controller::iaSpeakHertz() {
  mHertzSpeech = !mHertzSpeech;
  validateMenus();
}

}  // namespace orvane
