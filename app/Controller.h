// The tuner: the one owner of its state, from start-up to quit. It is made together with the two
// windows, awakened once, and from then on driven by the sound that arrives, by the controls and by
// the menus.
//
// Threads. Main thread, except ControllerIOProc (input thread, real-time safe but for the one copy
// per block) and ControllerPropertyListener with listenerProc (notification thread).
#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <optional>

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSocketNotifier>

#include "app/ControlAdapters.h"
#include "app/InterfaceDescription.h"
#include "app/MainRunLoop.h"
#include "app/System.h"
#include "app/UserDefaults.h"
#include "audio/AUInputUnit.h"
#include "audio/WakeUpDescriptor.h"
#include "core/CaptureBuffer.h"
#include "core/LampMeter.h"
#include "core/LevelMeter.h"
#include "core/NoteComputation.h"
#include "core/PitchDetector.h"
#include "core/UpdateLoop.h"
#include "views/AutoResizeBox.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizeMeter.h"
#include "views/AutoResizeStepper.h"
#include "views/ContentView.h"
#include "views/DisclosureButton.h"
#include "views/HiddenButton.h"
#include "views/Picture.h"
#include "views/ResizeWindow.h"
#include "views/TuningMeterView.h"

namespace orvane {

class Controller : public QObject, private UpdateLoopDisplay {
  Q_OBJECT

 public:
  struct Surroundings {
    AudioHardware &hardware;
    UserDefaults &defaults;
    System &system;
    std::filesystem::path temperaments;
  };

  // Makes the windows from their descriptions, unseen. Throws InterfaceError when one of them lacks
  // what the tuner needs. What the surroundings name must outlive this.
  explicit Controller(const Surroundings &surroundings);
  // Call applicationWillTerminate first when awakeFromNib has run.
  ~Controller() override;

  // The start-up, once. Without any input device it alerts, asks the system to terminate, and
  // returns with the rest undone.
  void awakeFromNib();

  // Delegate.
  bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
  void applicationWillTerminate();
  void applicationDidHide();
  void applicationDidUnhide();
  QSizeF windowWillResize(Window &window, QSizeF toSize) const;
  // Ticks or unticks the item of that action; every item is enabled.
  bool validateMenuItem(QAction &item) const;

  // Menu commands.
  void showHelp();
  void showOrvaneWindow();
  void showTuningMeterWindow();
  void about();
  void hide();
  void performClose();
  void terminate();
  void iaSpeakStatus();
  void iaSpeakDetails();
  void iaSpeakTune();
  void iaSpeakHertz();
  void openSoundPreferences();

  // Actions of the controls.
  void referencePitchUpDown();
  void referencePitchChanged();
  void tuningPopupChanged();
  void tonicPopupChanged();
  void transposePopupChanged();
  void inputDevicePopupChanged();
  void inputVolumeSliderChanged();
  void disclosureButton();

  void updateTonicMenu();
  void updateTransposeText();

  // The tick: measures a block and shows what it changed.
  void updateUI(CaptureBlock block);
  void updateTunerUI() override;
  void setTuningMeter(float semitones);
  void setLevelMeter() override;
  // Shows the layout that the disclosure control's state names.
  void disclose();

  // Says the text unless one is being said; drops it then.
  void speak(const QString &string);
  // What the main window shows, in words, as it stands.
  QString tuneSpeech(bool withOctave) const;
  QString hertzSpeech() const;
  void speakStatusTimer();
  void speakDetailsTimer();

  // Notification thread. Always noErr.
  OSStatus listenerProc(const PropertyChange *change);

  // Windows and controls, by their names in the descriptions. Owned by the descriptions.
  ResizeWindow *mWindow = nullptr;
  Window *mTuningMeterWindow = nullptr;
  QPointer<Window> mHelpWindow;  // once it was shown
  ContentView *mContentView = nullptr;
  TuningMeterView *mTuningMeterView = nullptr;
  DisclosureButton *mDisclosureButton = nullptr;
  AutoResizeBox *mUndisclosedSizeBox = nullptr;
  AutoResizeTextField *mNoteText = nullptr;
  AutoResizeTextField *mAccidentalText = nullptr;
  AutoResizeTextField *mOctaveText = nullptr;
  AutoResizeTextField *mCentText = nullptr;
  AutoResizeTextField *mFrequencyText = nullptr;
  AutoResizeTextField *mFrequencyDiffText = nullptr;
  AutoResizeTextField *mIdealFrequencyText = nullptr;
  AutoResizeTextField *mLevelText = nullptr;
  AutoResizeTextField *mReferencePitchText = nullptr;
  AutoResizeStepper *mReferencePitchStepper = nullptr;
  AutoResizePopUpButton *mTuningPopUpButton = nullptr;
  AutoResizePopUpButton *mTonicPopUpButton = nullptr;
  AutoResizePopUpButton *mTransposePopUpButton = nullptr;
  AutoResizeTextField *mTransposeText = nullptr;
  AutoResizePopUpButton *mInputDevicePopUpButton = nullptr;
  AutoResizeSlider *mInputVolumeSlider = nullptr;
  AutoResizeTextField *mInputVolumeText = nullptr;
  HiddenButton *openSoundPreferencesButton = nullptr;
  AutoResizeImageView *mFlat4 = nullptr;
  AutoResizeImageView *mFlat3 = nullptr;
  AutoResizeImageView *mFlat2 = nullptr;
  AutoResizeImageView *mFlat1 = nullptr;
  AutoResizeImageView *mFlat0 = nullptr;
  AutoResizeImageView *mNatural = nullptr;
  AutoResizeImageView *mSharp0 = nullptr;
  AutoResizeImageView *mSharp1 = nullptr;
  AutoResizeImageView *mSharp2 = nullptr;
  AutoResizeImageView *mSharp3 = nullptr;
  AutoResizeImageView *mSharp4 = nullptr;
  AutoResizeImageView *mLevel0 = nullptr;
  AutoResizeImageView *mLevel1 = nullptr;
  AutoResizeImageView *mLevel2 = nullptr;
  AutoResizeImageView *mLevel3 = nullptr;
  AutoResizeImageView *mLevel4 = nullptr;
  AutoResizeImageView *mLevel5 = nullptr;
  AutoResizeImageView *mLevel6 = nullptr;
  AutoResizeImageView *mLevel7 = nullptr;
  // The lamps and the level as assistive programs read them, in cents and in decibels below full
  // scale.
  AutoResizeMeter *mLampMeter = nullptr;
  AutoResizeMeter *mLevelMeter = nullptr;

  // Lamp pictures, shared by all lamps that show them.
  std::shared_ptr<const Picture> mGray16x16;
  std::shared_ptr<const Picture> mGreen16x16;
  std::shared_ptr<const Picture> mRed16x16;
  std::shared_ptr<const Picture> mYellow16x16;
  std::shared_ptr<const Picture> mGray24x24;
  std::shared_ptr<const Picture> mRed24x24;
  std::shared_ptr<const Picture> mGray28x28;
  std::shared_ptr<const Picture> mGreen28x28;
  std::shared_ptr<const Picture> mBlue28x28;

  // Settings.
  TuningSettings mSettings;  // mReferencePitch, mTuning, mTonic, mTranspose
  TemperamentTables mTables;
  bool disclosed = false;  // the details area is shown
  bool mTuneSpeech = false;
  bool mHertzSpeech = false;
  std::unique_ptr<SpeechSynthesizer> mSpeech;  // made when the first text is offered
  std::int64_t mInputVolume = 0;               // percent, the slider's value last passed on

  // Sound.
  WakeUpDescriptor mWakeUp;
  BlockQueue mBlocks{&mWakeUp};
  CaptureBuffer mCapture{mBlocks};     // mSampleRate, mIsBufferInvalid
  PitchDetector mDetector{mCapture};   // mRawFrequency, mRawPeak, mPeak
  UpdateLoop mLoop{mDetector, *this};  // mFrequency, mPeakHold and what is displayed of them
  MainRunLoop mMainRunLoop;
  std::unique_ptr<AUInputUnit> mAUInputUnit;

 private:
  static OSStatus ControllerIOProc(AudioDeviceID inDevice, const AudioTimeStamp *inNow,
                                   const AudioBufferList *inInputData,
                                   const AudioTimeStamp *inInputTime,
                                   AudioBufferList *outOutputData,
                                   const AudioTimeStamp *inOutputTime, void *inClientData);
  static OSStatus ControllerPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                             Boolean isInput, AudioDevicePropertyID inPropertyID,
                                             void *inClientData);

  // From the descriptions.
  void connectFields();
  void connectLamps();
  void connectActions();
  void connectMenus();
  QList<QMenu *> menus() const;
  void validateWhenShown(const QMenu &menu);
  // The main window's menus, for another one.
  void addMenus(Window &window);

  // Parts of the start-up, in its order.
  void loadTemperaments();
  void registerDefaults();
  void restoreTuning();
  void loadPictures();
  void restoreDisclosure();
  void takeOriginalSize();
  void shrinkToCollapsedLayout();
  // The window's frame for the layout that disclosed names, at the zoom it has.
  void takeLayout();

  void takeBlocks();
  void grayCentreLamp() override;
  // For assistive programs: the note in one phrase, and what the centre lamp tells by its colour.
  void describeNote(const NoteTexts &texts);
  void describeDeviation(const LampRow &row);
  void describeCentreLamp(CentreLamp lamp);
  // What the speech flags ask for.
  void speakContinuously();
  void readSampleRate();
  const std::shared_ptr<const Picture> &picture(LevelSegment segment) const;
  // Looks whether any window is left on screen.
  void windowsChanged();
  static std::vector<Window *> openWindows();
  void watch(const Window &window);
  void validateMenus() const;
  void windowClosed();

  AudioHardware &mHardware;
  UserDefaults &mDefaults;
  System &mSystem;
  const std::filesystem::path mTemperamentFile;

  InterfaceDescription mMainDescription;
  InterfaceDescription mMeterDescription;
  std::array<AutoResizeImageView *, 5> mFlats{};   // from the centre outwards
  std::array<AutoResizeImageView *, 5> mSharps{};  // from the centre outwards
  std::array<AutoResizeImageView *, 8> mLevels{};  // from quiet to loud

  std::optional<DevicePopUpButton> mDeviceMenu;
  std::optional<InputVolumeSlider> mVolumeSlider;
  std::optional<InputVolumeText> mVolumeText;
  QSocketNotifier mBlockNotifier;
  bool mIsHidden = false;  // no window is left on screen, the stream is stopped
};

}  // namespace orvane
