// The controller's display as assistive programs read it: in words, where the windows have signs
// and colours.
#include "app/Controller.h"

namespace orvane {

void Controller::describeNote(const NoteTexts &texts) {
  std::string phrase = texts.mNoteText;
  if (texts.mAccidentalText != " ")
    phrase += texts.mAccidentalText == "♭" ? " flat" : " sharp";
  if (texts.mOctaveText != "-")
    phrase += " " + texts.mOctaveText;
  mNoteText->setAccessibleText(QString::fromStdString(phrase));
}

// Of the needle too, which is told only the rounded cents, and these can lie on a whole cent that
// the shown text has not reached.
void Controller::describeDeviation(const LampRow &row) {
  mLampMeter->setValue(row.cents);
  mTuningMeterView->setValue(row.cents);
  describeCentreLamp(row.natural);
}

void Controller::describeCentreLamp(CentreLamp lamp) {
  switch (lamp) {
    case CentreLamp::Green:
      mLampMeter->setState(QStringLiteral("In tune"));
      break;
    case CentreLamp::Blue:
      mLampMeter->setState(QStringLiteral("Out of tune"));
      break;
    case CentreLamp::Gray:
      mLampMeter->setState(QStringLiteral("No note is heard"));
      break;
  }
}

}  // namespace orvane
