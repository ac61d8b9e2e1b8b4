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
