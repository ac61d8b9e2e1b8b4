// What the tuner hands to assistive programs, and when it tells them of changes.
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

#include <QAccessible>

#include "tests/app/ControllerRig.h"

namespace orvane::test {
namespace {

class ControllerAccessibilityTest : public testing::Test {
 protected:
  void show(float hertz) {
    tuner.mLoop.mFrequency = hertz;
    tuner.updateTunerUI();
  }
  void showLevel(std::int64_t level) {
    tuner.mDetector.mPeak = level;
    tuner.setLevelMeter();
  }

  static QAccessibleInterface &interface(QObject *object) {
    return *QAccessible::queryAccessibleInterface(object);
  }
  static std::string text(QObject *object) {
    QAccessibleTextInterface *text = interface(object).textInterface();
    return text->text(0, text->characterCount()).toStdString();
  }
  static std::string nameOf(QObject *object) {
    return interface(object).text(QAccessible::Name).toStdString();
  }
  static double value(QObject *object) {
    return interface(object).valueInterface()->currentValue().toDouble();
  }
  std::string centreLamp() const {
    return interface(tuner.mLampMeter).text(QAccessible::Description).toStdString();
  }

  ControllerRig rig;
  Controller &tuner = rig.launch();
};

TEST_F(ControllerAccessibilityTest, TheNoteIsOnePhraseWithTheAccidentalInWords) {
  EXPECT_EQ(nameOf(tuner.mNoteText), "Note");
  EXPECT_EQ(text(tuner.mNoteText), "A 4");
  show(466.16F);
  EXPECT_EQ(text(tuner.mNoteText), "B flat 4");
  EXPECT_EQ(tuner.mNoteText->stringValue(), "B");
  show(184.997F);
  EXPECT_EQ(text(tuner.mNoteText), "F sharp 3");
}

TEST_F(ControllerAccessibilityTest, TheLampsAndTheNeedleAreMetersThatEndAtFiftyCents) {
  for (QObject *meter :
       {static_cast<QObject *>(tuner.mLampMeter), static_cast<QObject *>(tuner.mTuningMeterView)}) {
    EXPECT_EQ(interface(meter).valueInterface()->minimumValue(), -50.0);
    EXPECT_EQ(interface(meter).valueInterface()->maximumValue(), 50.0);
  }
  // 1200·log2(446/440) = 23.4 cents.
  show(446.0F);
  EXPECT_EQ(value(tuner.mLampMeter), 23.0);
  EXPECT_EQ(value(tuner.mTuningMeterView), 23.0);
  EXPECT_EQ(centreLamp(), "Out of tune");
  tuner.setTuningMeter(-0.61F);
  tuner.mTuningMeterView->setCent(-61.0F);
  EXPECT_EQ(value(tuner.mLampMeter), -50.0);
  EXPECT_EQ(value(tuner.mTuningMeterView), -50.0);
  tuner.mTuningMeterView->setCent(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(value(tuner.mTuningMeterView), -50.0);
}

TEST_F(ControllerAccessibilityTest, TheCentreLampIsToldInWords) {
  EXPECT_EQ(centreLamp(), "In tune");
  tuner.setTuningMeter(0.035F);
  EXPECT_EQ(centreLamp(), "Out of tune");
  tuner.setTuningMeter(-0.02F);
  EXPECT_EQ(centreLamp(), "In tune");
}

TEST_F(ControllerAccessibilityTest, TheLevelIsAMeterInDecibels) {
  EXPECT_EQ(value(tuner.mLevelMeter), -96.0);
  showLevel(84);
  EXPECT_EQ(value(tuner.mLevelMeter), -12.0);
  showLevel(96);
  EXPECT_EQ(value(tuner.mLevelMeter), 0.0);
  tuner.disclosed = false;
  showLevel(60);
  EXPECT_EQ(value(tuner.mLevelMeter), 0.0) << "as the lamps, which are not drawn";
}

TEST_F(ControllerAccessibilityTest, APopUpIsNamedByItsLabelAndReadByItsTitle) {
  EXPECT_EQ(nameOf(tuner.mTuningPopUpButton), "Temperament");
  EXPECT_EQ(text(tuner.mTuningPopUpButton), "Equal temperament");
  tuner.mTuningPopUpButton->selectItemAtIndex(2);
  EXPECT_EQ(text(tuner.mTuningPopUpButton), "Just Intonation");
  EXPECT_EQ(interface(tuner.mTuningPopUpButton).child(0)->childCount(),
            tuner.mTuningPopUpButton->numberOfItems());
}

TEST_F(ControllerAccessibilityTest, OnlyTheFieldToTypeInCanBeEdited) {
  EXPECT_NE(interface(tuner.mReferencePitchText).editableTextInterface(), nullptr);
  EXPECT_FALSE(interface(tuner.mReferencePitchText).state().readOnly);
  EXPECT_EQ(interface(tuner.mCentText).editableTextInterface(), nullptr);
  EXPECT_TRUE(interface(tuner.mCentText).state().readOnly);
}

TEST_F(ControllerAccessibilityTest, PicturesAndSignsAreNotInTheTree) {
  QAccessibleInterface &content = interface(tuner.mContentView);
  std::set<QObject *> found;
  for (int k = 0; k < content.childCount(); ++k) {
    found.insert(content.child(k)->object());
    EXPECT_EQ(content.indexOfChild(content.child(k)), k);
  }
  const std::vector<QObject *> hidden = {
      tuner.mUndisclosedSizeBox, tuner.mFlat4,     tuner.mNatural, tuner.mLevel7,
      tuner.mAccidentalText,     tuner.mOctaveText};
  for (QObject *object : hidden) {
    EXPECT_EQ(found.count(object), 0U) << object->objectName().toStdString();
    EXPECT_EQ(content.indexOfChild(&interface(object)), -1);
  }
  for (const QObject *object : found)
    EXPECT_FALSE(nameOf(const_cast<QObject *>(object)).empty())
        << object->objectName().toStdString();
}

}  // namespace
}  // namespace orvane::test
