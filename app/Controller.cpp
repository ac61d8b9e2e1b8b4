// The controller's start-up, quit, windows and menu commands.
#include "app/Controller.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QMessageBox>

#include "app/HelpPanel.h"
#include "core/NumberText.h"
#include "core/TuningControls.h"

namespace orvane {
namespace {

constexpr const char *kReferencePitchKey = "ReferencePitchKey";
constexpr const char *kTuningKey = "TuningKey";
constexpr const char *kTonicKey = "TonicKey";
constexpr const char *kTransposeKey = "org.velmora.TransposeKey";
constexpr const char *kDisclosedKey = "DisclosedKey";
constexpr const char *kTunerMeterKey = "org.velmora.TunerMeterKey";
constexpr const char *kInputDeviceKey = "org.velmora.InputDeviceKey";
constexpr const char *kTuneSpeechKey = "org.velmora.TuneSpeechKey";
constexpr const char *kHertzSpeechKey = "org.velmora.HertzSpeechKey";

constexpr float kDefaultReferencePitch = 440.0F;  // hertz
constexpr std::int64_t kHighestTonic = 11;        // B
constexpr std::int64_t kMostTransposed = 11;      // semitones

}  // namespace

Controller::Controller(const Surroundings &surroundings)
    : mHardware(surroundings.hardware),
      mDefaults(surroundings.defaults),
      mSystem(surroundings.system),
      mTemperamentFile(surroundings.temperaments),
      mMainDescription(QStringLiteral("MainMenu")),
      mMeterDescription(QStringLiteral("TuningMeter")),
      mBlockNotifier(mWakeUp.descriptor(), QSocketNotifier::Read) {
  connectFields();
  connectLamps();
  connectActions();
  connectMenus();
  takeOriginalSize();
  connect(&mBlockNotifier, &QSocketNotifier::activated, this, &Controller::takeBlocks);
}

Controller::~Controller() {
  // A window's end ends the editing of its field, and that is no action for what is left by then.
  mReferencePitchText->disconnect(this);
}

void Controller::awakeFromNib() {
  loadTemperaments();
  registerDefaults();
  restoreTuning();
  loadPictures();

  disclosed = true;
  mLoop.mFrequency = mSettings.mReferencePitch;
  updateTransposeText();
  updateTonicMenu();
  mTonicPopUpButton->setEnabled(mSettings.mTuning != 0);
  updateTunerUI();
  setLevelMeter();

  restoreDisclosure();
  mWindow->setContentAspectRatio(mWindow->contentSize());
  if (mDefaults.boolForKey(kTunerMeterKey))
    mTuningMeterWindow->orderFront();
  mWindow->makeKeyAndOrderFront();

  mInputVolumeSlider->setIntValue(0);
  mInputVolumeText->setIntValue(0);
  mAUInputUnit = std::make_unique<AUInputUnit>(mHardware, &mMainRunLoop);
  mAUInputUnit->setIOProc(ControllerIOProc, this);
  mAUInputUnit->setListenerProc(ControllerPropertyListener, this);
  mDeviceMenu.emplace(*mInputDevicePopUpButton);
  mAUInputUnit->setupPopUpButton(&*mDeviceMenu);
  if (mInputDevicePopUpButton->numberOfItems() < 1) {
    mSystem.runAlertPanel("Sorry, Orvane cannot run with no audio input device.", "", "OK");
    mSystem.terminate();
    return;
  }
  mVolumeSlider.emplace(*mInputVolumeSlider);
  mVolumeText.emplace(*mInputVolumeText);
  mAUInputUnit->setupVolumeSlider(&*mVolumeSlider, &*mVolumeText);
  mAUInputUnit->setInputDeviceWithName(mDefaults.stringForKey(kInputDeviceKey));
  readSampleRate();

  mTuneSpeech = mDefaults.boolForKey(kTuneSpeechKey);
  mHertzSpeech = mDefaults.boolForKey(kHertzSpeechKey);
  validateMenus();
}

void Controller::loadTemperaments() {
  mTables.load(mTemperamentFile, [this](const std::string &line) { mSystem.log(line); });
  for (std::size_t row = 0; row < mTables.rowCount(); ++row)
    mTuningPopUpButton->addItemWithTitle(QString::fromStdString(mTables.name(row)));
  for (std::size_t row = 0; row < mTables.rowCount(); ++row)
    mTuningPopUpButton->setToolTipAtIndex(
        QString::fromStdString(mTables.toolTip(row)),
        static_cast<int>(itemOfTuning(static_cast<std::int64_t>(row) + 1)));
}

void Controller::registerDefaults() {
  mDefaults.registerDefaults(
      {{kReferencePitchKey, floatText(kDefaultReferencePitch)}, {kTunerMeterKey, "true"}});
}

void Controller::restoreTuning() {
  mSettings.mReferencePitch = mDefaults.floatForKey(kReferencePitchKey);
  if (!std::isfinite(mSettings.mReferencePitch) || mSettings.mReferencePitch <= 0.0F)
    mSettings.mReferencePitch = kDefaultReferencePitch;

  mSettings.mTuning = mDefaults.integerForKey(kTuningKey);
  // The menu has two more items than there are temperaments, so what passes may still name none.
  if (mSettings.mTuning > mTuningPopUpButton->numberOfItems() || mSettings.mTuning < 0 ||
      mSettings.mTuning > static_cast<std::int64_t>(mTables.rowCount()))
    mSettings.mTuning = 0;
  mTuningPopUpButton->selectItemAtIndex(static_cast<int>(itemOfTuning(mSettings.mTuning)));

  mSettings.mTonic = std::clamp<std::int64_t>(mDefaults.integerForKey(kTonicKey), 0, kHighestTonic);
  mTonicPopUpButton->selectItemAtIndex(static_cast<int>(mSettings.mTonic));
  mSettings.mTranspose = std::clamp<std::int64_t>(mDefaults.integerForKey(kTransposeKey),
                                                  -kMostTransposed, kMostTransposed);
  mTransposePopUpButton->selectItemAtIndex(static_cast<int>(itemOfTranspose(mSettings.mTranspose)));

  mReferencePitchText->setFloatValue(mSettings.mReferencePitch);
  mReferencePitchStepper->setFloatValue(mSettings.mReferencePitch);
}

void Controller::loadPictures() {
  const auto imageNamed = [this](const char *name) {
    std::shared_ptr<const Picture> picture = Picture::imageNamed(QString::fromLatin1(name));
    if (picture == nullptr)
      mSystem.log(std::string("picture: cannot load ") + name);
    return picture;
  };
  mGray16x16 = imageNamed("gray16x16");
  mGreen16x16 = imageNamed("green16x16");
  mRed16x16 = imageNamed("red16x16");
  mYellow16x16 = imageNamed("yellow16x16");
  mGray24x24 = imageNamed("gray24x24");
  mRed24x24 = imageNamed("red24x24");
  mGray28x28 = imageNamed("gray28x28");
  mGreen28x28 = imageNamed("green28x28");
  mBlue28x28 = imageNamed("blue28x28");
}

void Controller::restoreDisclosure() {
  disclosed = !mDefaults.objectForKey(kDisclosedKey) || mDefaults.boolForKey(kDisclosedKey);
  mDisclosureButton->setState(disclosed ? 1 : 0);
  if (!disclosed)
    shrinkToCollapsedLayout();
}

void Controller::applicationWillTerminate() {
  // A hidden application has stopped its stream already.
  if (mAUInputUnit != nullptr && !mIsHidden)
    mAUInputUnit->stop();
  mDefaults.setFloat(mSettings.mReferencePitch, kReferencePitchKey);
  mDefaults.setBool(mDisclosureButton->state() != 0, kDisclosedKey);
  mDefaults.setInteger(mSettings.mTuning, kTuningKey);
  mDefaults.setInteger(mSettings.mTonic, kTonicKey);
  mDefaults.setInteger(mSettings.mTranspose, kTransposeKey);
  // A minimised window counts as visible: hiding the application must not close it for next time.
  mDefaults.setBool(mTuningMeterWindow->isVisible(), kTunerMeterKey);
  std::optional<std::string> device;
  if (mInputDevicePopUpButton->indexOfSelectedItem() >= 0)
    device = mInputDevicePopUpButton->titleOfSelectedItem().toStdString();
  mDefaults.setObject(device, kInputDeviceKey);
  mDefaults.setBool(mTuneSpeech, kTuneSpeechKey);
  mDefaults.setBool(mHertzSpeech, kHertzSpeechKey);
  mDefaults.synchronize();
}

void Controller::applicationDidHide() {
  mAUInputUnit->stop();
}

void Controller::applicationDidUnhide() {
  mAUInputUnit->start();
}

void Controller::windowsChanged() {
  const std::vector<Window *> windows = openWindows();
  const bool isHidden =
      !windows.empty() && std::all_of(windows.begin(), windows.end(),
                                      [](const Window *window) { return window->isMinimized(); });
  if (isHidden == mIsHidden || mAUInputUnit == nullptr)
    return;
  mIsHidden = isHidden;
  if (isHidden)
    applicationDidHide();
  else
    applicationDidUnhide();
}

std::vector<Window *> Controller::openWindows() {
  std::vector<Window *> windows;
  for (QWidget *widget : QApplication::topLevelWidgets()) {
    auto *window = qobject_cast<Window *>(widget);
    if (window != nullptr && window->isVisible())
      windows.push_back(window);
  }
  return windows;
}

void Controller::windowClosed() {
  if (!openWindows().empty())
    windowsChanged();
  else if (applicationShouldTerminateAfterLastWindowClosed())
    mSystem.terminate();
}

bool Controller::validateMenuItem(QAction &item) const {
  if (item.objectName() == QLatin1String("iaSpeakTune"))
    item.setChecked(mTuneSpeech);
  else if (item.objectName() == QLatin1String("iaSpeakHertz"))
    item.setChecked(mHertzSpeech);
  return true;
}

void Controller::validateMenus() const {
  const std::array<const Window *, 3> windows = {mWindow, mTuningMeterWindow, mHelpWindow};
  for (const Window *window : windows) {
    if (window == nullptr)
      continue;
    for (QAction *item : window->findChildren<QAction *>())
      validateMenuItem(*item);
  }
}

void Controller::showOrvaneWindow() {
  mWindow->makeKeyAndOrderFront();
  windowsChanged();
}

void Controller::showTuningMeterWindow() {
  mTuningMeterWindow->makeKeyAndOrderFront();
  windowsChanged();
}

void Controller::hide() {
  for (Window *window : openWindows())
    window->showMinimized();
}

void Controller::performClose() {
  if (QWidget *window = QApplication::activeWindow())
    window->close();
}

void Controller::showHelp() {
  Window *panel = HelpPanel::showHelpPanel(mSystem);
  if (panel == nullptr || panel == mHelpWindow)
    return;
  mHelpWindow = panel;
  watch(*panel);
  // When it is the only window left, the others are opened from here.
  addMenus(*panel);
  validateMenus();
}

void Controller::terminate() {
  mSystem.terminate();
}

void Controller::about() {
  QMessageBox::about(QApplication::activeWindow(), tr("About Orvane"),
                     tr("<h3>Orvane %1</h3><p>An instrument tuner that lives in unequal "
                        "temperaments too.</p>")
                         .arg(QCoreApplication::applicationVersion()));
}

}  // namespace orvane
