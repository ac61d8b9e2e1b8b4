// What the tuner hands to assistive programs, and when it tells them of changes.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <QAccessible>

#include "tests/WindowLayouts.h"
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
  int shownCents() const { return tuner.mCentText->intValue(); }
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

TEST_F(ControllerAccessibilityTest, TheLampsAndTheNeedleAreMetersOfFiftyCentsToEachSide) {
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
}

TEST_F(ControllerAccessibilityTest, ADeviationBeyondTheLampsIsReadAsItIsAndMovesTheLimit) {
  tuner.setTuningMeter(-0.615F);
  EXPECT_EQ(shownCents(), -61);
  EXPECT_EQ(value(tuner.mLampMeter), -61.0);
  EXPECT_EQ(value(tuner.mTuningMeterView), -61.0);
  EXPECT_EQ(interface(tuner.mLampMeter).valueInterface()->minimumValue(), -61.0);
  EXPECT_EQ(interface(tuner.mLampMeter).valueInterface()->maximumValue(), 50.0);
}

// Of the single-precision numbers next to a whole cent, a hundred times which is that cent, some
// have not reached it: 0.03F lies below 0.03, 0.09F above 0.09.
TEST_F(ControllerAccessibilityTest, TheLampsAndTheNeedleAreReadAsTheCentsThatAreShown) {
  const std::vector<std::pair<float, int>> deviations = {
      {0.0F, 0},         {0.00999F, 0},       {-0.005F, 0},        {0.02F, 1},
      {0.03F, 2},        {0.030000001F, 3},   {0.06F, 5},          {0.060000002F, 6},
      {0.089999996F, 8}, {0.09F, 9},          {0.11F, 10},         {0.115F, 11},
      {0.12F, 11},       {0.120000005F, 12},  {0.17999999F, 17},   {0.18F, 18},
      {0.21F, 20},       {0.32999998F, 32},   {0.33F, 33},         {0.36F, 36},
      {0.45F, 44},       {0.48F, 47},         {0.49999997F, 49},   {0.5F, 50},
      {0.65999997F, 65}, {-0.03F, -2},        {-0.030000001F, -3}, {-0.089999996F, -8},
      {-0.11F, -10},     {-0.32999998F, -32}, {-0.48F, -47},       {-0.5F, -50},
  };
  for (const auto &[deviation, cents] : deviations) {
    tuner.setTuningMeter(deviation);
    tuner.mTuningMeterView->setCent(deviation * 100.0F);
    EXPECT_EQ(shownCents(), cents) << deviation;
    EXPECT_EQ(value(tuner.mLampMeter), cents) << deviation;
    EXPECT_EQ(value(tuner.mTuningMeterView), cents) << deviation;
  }
  for (float deviation = -0.6F; deviation < 0.6F;
       deviation = std::nextafter(deviation + 1e-4F, 1.0F)) {
    tuner.setTuningMeter(deviation);
    tuner.mTuningMeterView->setCent(deviation * 100.0F);
    ASSERT_EQ(value(tuner.mLampMeter), shownCents()) << deviation;
    ASSERT_EQ(value(tuner.mTuningMeterView), shownCents()) << deviation;
  }
}

TEST_F(ControllerAccessibilityTest, AMeterCannotBeSetAndTakesNoFocus) {
  const std::vector<QObject *> meters = {tuner.mLampMeter, tuner.mLevelMeter,
                                         tuner.mTuningMeterView};
  for (QObject *meter : meters) {
    EXPECT_FALSE(interface(meter).state().focusable);
    EXPECT_TRUE(interface(meter).state().readOnly);
    EXPECT_EQ(interface(meter).actionInterface()->actionNames(), QStringList());
    const double before = value(meter);
    interface(meter).valueInterface()->setCurrentValue(20.0);
    EXPECT_EQ(value(meter), before);
  }
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
  EXPECT_EQ(text(tuner.mTuningPopUpButton), "1/3-comma meantone (Salinas, 1577)");
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

TEST_F(ControllerAccessibilityTest, WhatTheWindowIsTooSmallToShowIsNotInTheTree) {
  QAccessibleInterface &content = interface(tuner.mContentView);
  const auto isThere = [&](QObject *object) {
    return content.indexOfChild(&interface(object)) >= 0;
  };
  const int all = content.childCount();
  const auto resize = [&](int lower) {
    tuner.mWindow->resize(tuner.mWindow->width(), tuner.mWindow->height() - lower);
    QApplication::processEvents();
  };
  // Down to a content of 340, through the list of the temperaments' label and control.
  constexpr int kLower = kFullLayout.height() - 340;
  resize(kLower);
  EXPECT_TRUE(isThere(tuner.mNoteText));
  EXPECT_TRUE(isThere(tuner.mReferencePitchText));
  EXPECT_TRUE(isThere(tuner.mTuningPopUpButton)) << "its upper pixels are seen";
  EXPECT_TRUE(isThere(tuner.mLevelMeter));
  EXPECT_FALSE(isThere(tuner.mTonicPopUpButton));
  EXPECT_FALSE(isThere(tuner.openSoundPreferencesButton));
  EXPECT_TRUE(isThere(tuner.mLevelText));
  EXPECT_FALSE(isThere(tuner.mInputVolumeText));
  resize(-kLower);
  EXPECT_TRUE(isThere(tuner.mTonicPopUpButton));
  EXPECT_EQ(content.childCount(), all);
}

}  // namespace
}  // namespace orvane::test
