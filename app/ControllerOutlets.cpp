// The controller and its windows: the fields from the descriptions, and what the controls and menus
// call.
#include <QMenu>
#include <QMenuBar>

#include "app/Controller.h"

namespace orvane {

void Controller::connectFields() {
  mWindow = &mMainDescription.root<ResizeWindow>();
  mTuningMeterWindow = &mMeterDescription.root<Window>();
  mMeterDescription.connect(mTuningMeterView, "mTuningMeterView");
  const auto connect = [this](auto *&field, const char *name) {
    mMainDescription.connect(field, name);
  };
  connect(mContentView, "mContentView");
  connect(mDisclosureButton, "mDisclosureButton");
  connect(mUndisclosedSizeBox, "mUndisclosedSizeBox");
  connect(mNoteText, "mNoteText");
  connect(mAccidentalText, "mAccidentalText");
  connect(mOctaveText, "mOctaveText");
  connect(mCentText, "mCentText");
  connect(mFrequencyText, "mFrequencyText");
  connect(mFrequencyDiffText, "mFrequencyDiffText");
  connect(mIdealFrequencyText, "mIdealFrequencyText");
  connect(mLevelText, "mLevelText");
  connect(mReferencePitchText, "mReferencePitchText");
  connect(mReferencePitchStepper, "mReferencePitchStepper");
  connect(mTuningPopUpButton, "mTuningPopUpButton");
  connect(mTonicPopUpButton, "mTonicPopUpButton");
  connect(mTransposePopUpButton, "mTransposePopUpButton");
  connect(mTransposeText, "mTransposeText");
  connect(mInputDevicePopUpButton, "mInputDevicePopUpButton");
  connect(mInputVolumeSlider, "mInputVolumeSlider");
  connect(mInputVolumeText, "mInputVolumeText");
  connect(openSoundPreferencesButton, "openSoundPreferencesButton");
}

void Controller::connectLamps() {
  const auto connect = [this](AutoResizeImageView *&field, const char *name) {
    mMainDescription.connect(field, name);
  };
  connect(mFlat4, "mFlat4");
  connect(mFlat3, "mFlat3");
  connect(mFlat2, "mFlat2");
  connect(mFlat1, "mFlat1");
  connect(mFlat0, "mFlat0");
  connect(mNatural, "mNatural");
  connect(mSharp0, "mSharp0");
  connect(mSharp1, "mSharp1");
  connect(mSharp2, "mSharp2");
  connect(mSharp3, "mSharp3");
  connect(mSharp4, "mSharp4");
  connect(mLevel0, "mLevel0");
  connect(mLevel1, "mLevel1");
  connect(mLevel2, "mLevel2");
  connect(mLevel3, "mLevel3");
  connect(mLevel4, "mLevel4");
  connect(mLevel5, "mLevel5");
  connect(mLevel6, "mLevel6");
  connect(mLevel7, "mLevel7");
  mMainDescription.connect(mLampMeter, "mLampMeter");
  mMainDescription.connect(mLevelMeter, "mLevelMeter");
  mFlats = {mFlat0, mFlat1, mFlat2, mFlat3, mFlat4};
  mSharps = {mSharp0, mSharp1, mSharp2, mSharp3, mSharp4};
  mLevels = {mLevel0, mLevel1, mLevel2, mLevel3, mLevel4, mLevel5, mLevel6, mLevel7};
}

void Controller::connectActions() {
  connect(mReferencePitchStepper, &AutoResizeStepper::action, this,
          &Controller::referencePitchUpDown);
  connect(mReferencePitchText, &AutoResizeTextField::action, this,
          &Controller::referencePitchChanged);
  connect(mTuningPopUpButton, &AutoResizePopUpButton::action, this,
          &Controller::tuningPopupChanged);
  connect(mTonicPopUpButton, &AutoResizePopUpButton::action, this, &Controller::tonicPopupChanged);
  connect(mTransposePopUpButton, &AutoResizePopUpButton::action, this,
          &Controller::transposePopupChanged);
  connect(mInputDevicePopUpButton, &AutoResizePopUpButton::action, this,
          &Controller::inputDevicePopupChanged);
  connect(mInputVolumeSlider, &AutoResizeSlider::action, this,
          &Controller::inputVolumeSliderChanged);
  connect(openSoundPreferencesButton, &HiddenButton::action, this,
          &Controller::openSoundPreferences);
  connect(mDisclosureButton, &DisclosureButton::action, this, &Controller::disclosureButton);

  for (Window *window : {static_cast<Window *>(mWindow), mTuningMeterWindow}) {
    watch(*window);
  }
  mWindow->windowWillResize = [this](Window &window, QSizeF toSize) {
    return windowWillResize(window, toSize);
  };
}

void Controller::watch(const Window &window) {
  connect(&window, &Window::closed, this, &Controller::windowClosed, Qt::UniqueConnection);
  connect(&window, &Window::miniaturized, this, &Controller::windowsChanged, Qt::UniqueConnection);
  connect(&window, &Window::deminiaturized, this, &Controller::windowsChanged,
          Qt::UniqueConnection);
}

void Controller::connectMenus() {
  const auto bind = [this](const char *name, void (Controller::*command)()) {
    QAction *item = nullptr;
    mMainDescription.connect(item, name);
    connect(item, &QAction::triggered, this, command);
  };
  bind("about", &Controller::about);
  bind("openSoundPreferences", &Controller::openSoundPreferences);
  bind("hide", &Controller::hide);
  bind("terminate", &Controller::terminate);
  bind("showOrvaneWindow", &Controller::showOrvaneWindow);
  bind("showTuningMeterWindow", &Controller::showTuningMeterWindow);
  bind("performClose", &Controller::performClose);
  bind("iaSpeakStatus", &Controller::iaSpeakStatus);
  bind("iaSpeakDetails", &Controller::iaSpeakDetails);
  bind("iaSpeakTune", &Controller::iaSpeakTune);
  bind("iaSpeakHertz", &Controller::iaSpeakHertz);
  bind("showHelp", &Controller::showHelp);

  for (QMenu *menu : menus())
    validateWhenShown(*menu);
  addMenus(*mTuningMeterWindow);
}

QList<QMenu *> Controller::menus() const {
  return mWindow->menuBar()->findChildren<QMenu *>(Qt::FindDirectChildrenOnly);
}

void Controller::validateWhenShown(const QMenu &menu) {
  connect(&menu, &QMenu::aboutToShow, this, [this, &menu] {
    for (QAction *item : menu.actions())
      item->setEnabled(validateMenuItem(*item));
  });
}

// With items of its own: an item in two windows has its place told to assistive programs for one of
// them only.
void Controller::addMenus(Window &window) {
  for (const QMenu *menu : menus()) {
    QMenu *twin = window.menuBar()->addMenu(menu->title());
    for (QAction *item : menu->actions()) {
      auto *copy = new QAction(item->text(), twin);
      copy->setObjectName(item->objectName());
      copy->setSeparator(item->isSeparator());
      copy->setCheckable(item->isCheckable());
      copy->setShortcut(item->shortcut());
      connect(copy, &QAction::triggered, item, &QAction::trigger);
      twin->addAction(copy);
    }
    validateWhenShown(*twin);
  }
}

}  // namespace orvane
