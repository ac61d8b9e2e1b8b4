// The input side of the audio hardware: the list of input devices and their data sources, the one
// that is in use, its stream and its change notifications. It knows the hardware through
// AudioHardware and the device menu through PopUpButton.
//
// Threads. Everything here runs on the main thread, except listenerProc() and what it calls
// (setStreamFormat, setStreamConfiguration, setVolumeState), which run on the notification thread
// while the device is started. stop() removes the listeners before the main thread re-reads any of
// it, so the two never read the hardware into the same field at once; the words that the main
// thread reads meanwhile are atomic. Nothing here is real-time safe.
//
// The volume's controls are only touched on the main thread, by updateVolumeState(), which
// setVolumeState() posts there. The unit sees to it that a refresh still posted when the unit goes
// does nothing; that holds because the unit goes on the main thread.
//
// Hardware errors. A read that fails leaves what was known before; no other status is looked at.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/AudioInputSource.h"
#include "audio/MainThread.h"
#include "audio/PopUpButton.h"
#include "audio/PropertyChange.h"
#include "audio/VolumeControls.h"

namespace orvane {

class AUInputUnit {
 public:
  // Lists the inputs, once: devices attached later are not listed. hardware and mainThread must
  // outlive the unit. Without mainThread the volume's controls are not refreshed by themselves.
  explicit AUInputUnit(AudioHardware &hardware, MainThread *mainThread = nullptr);
  AUInputUnit(const AUInputUnit &) = delete;
  AUInputUnit &operator=(const AUInputUnit &) = delete;
  // Main thread. Call stop() first when a device is started.
  ~AUInputUnit() = default;

  // Appends to array one entry per data source of every device that can switch its source, and one
  // per other device, in the hardware's order. isInput: the side of the devices to list. A title
  // that array already holds gets " (2)", " (3)" … appended.
  void setupAudioSource(std::vector<AudioInputSource> &array, bool isInput);
  const std::vector<AudioInputSource> &audioInputSources() const { return mAudioInputSourceArray; }

  // Takes button as the device menu and fills it; does nothing when it is the one already held.
  // button must outlive the unit or be replaced; null leaves the unit without a menu.
  void setupPopUpButton(PopUpButton *button);
  static void setupPopUpButton(PopUpButton *button, const std::vector<AudioInputSource> &array);

  // Takes the volume's controls, to be refreshed from now on. They must outlive the unit or be
  // replaced; null stands for none.
  void setupVolumeSlider(VolumeSlider *slider, VolumeText *volumeText);

  // Stored for start(); set them before the first device is chosen. The procedure runs on the input
  // thread and the listener on the notification thread, each with its refCon.
  void setIOProc(AudioDeviceIOProc proc, void *refCon);
  void setListenerProc(AudioDevicePropertyListenerProc proc, void *refCon);

  // Makes an entry the active input: switches the stream to its device when that is another one,
  // and to its data source when it has one. An index that names no entry does nothing.
  void setInputDeviceAtIndex(std::int64_t index);
  // Selects the menu item with that title, or the default when there is none, and makes it the
  // active input.
  void setInputDeviceWithName(const std::optional<std::string> &name);
  // 0: the first entry of the list, whatever the system's own default is.
  std::int32_t indexOfDefaultInputDevice() const { return 0; }
  // Switches the device in use to one of its data sources.
  void setDataSource(UInt32 dataSource);

  // Start and stop the stream of the device in use, with its notifications. They keep no running
  // flag: the caller pairs them. Both do nothing while the list is empty.
  void start();
  void stop();

  void setStreamFormat();
  void setStreamConfiguration();
  // Re-reads whether the volume can be set and the volume itself, then posts updateVolumeState().
  void setVolumeState();
  // Shows the volume in its controls, cut to a whole percentage; 100 and "n/a" when it cannot be
  // set. Main thread.
  void updateVolumeState();
  // Sets the volume of every input channel. Does nothing when it cannot be set or is so already.
  // percent: 0 to 100. Main thread.
  void setVolume(std::int64_t percent);

  // Hertz, as the device last reported it; 0 before the first device. Any thread.
  Float64 sampleRate() const { return mSampleRate.load(std::memory_order_acquire); }
  // Input channels of the device in use, over all its buffers. Any thread.
  UInt32 channels() const { return mChannels.load(std::memory_order_acquire); }
  // True when every input channel's volume can be set. Any thread.
  bool isVolumeWritable() const { return mIsVolumeWritable.load(std::memory_order_acquire); }
  // 0 to 1, of the first channel. Any thread.
  Float32 inputVolume() const { return mInputVolume.load(std::memory_order_acquire); }
  // 0 until the first device is chosen. Main thread.
  AudioDeviceID inputDevice() const { return mInputDevice; }

  // Re-reads what change says has changed, then passes it on. Notification thread. Returns what the
  // listener returns, or noErr without one.
  OSStatus listenerProc(const PropertyChange *change);

 private:
  // The input channels whose volume is looked after.
  UInt32 volumeChannels() const;

  AudioHardware &mHardware;
  MainThread *const mMainThread;

  AudioDeviceID mInputDevice = 0;
  PopUpButton *mDevicePopUpButton = nullptr;
  VolumeSlider *mVolumeSlider = nullptr;
  VolumeText *mVolumeText = nullptr;
  std::int64_t mIndexOfInputDevice = -1;  // the index of no selection
  AudioDeviceIOProc mIOProc = nullptr;
  void *mIORefCon = nullptr;
  AudioDevicePropertyListenerProc mListenerProc = nullptr;
  void *mListenerRefCon = nullptr;
  // Where a refresh of the volume's controls may run: everywhere.
  const std::vector<std::string> mModes = {"NSDefaultRunLoopMode", "NSConnectionReplyMode",
                                           "NSModalPanelRunLoopMode", "NSEventTrackingRunLoopMode"};
  std::vector<AudioInputSource> mAudioInputSourceArray;

  AudioStreamBasicDescription mInputStreamDescription;
  std::vector<std::byte> mAudioBufferList;  // an AudioBufferList, as many bytes as it has
  std::atomic<Float64> mSampleRate = 0.0;   // of mInputStreamDescription, for other threads
  std::atomic<UInt32> mChannels = 0;
  std::atomic<bool> mIsVolumeWritable = false;
  std::atomic<Float32> mInputVolume = 0.0F;

  // Its end tells posted refreshes that the unit is gone.
  const std::shared_ptr<const bool> mLife = std::make_shared<const bool>(true);
};

// Registered with the hardware; inClientData is the AUInputUnit. Notification thread.
OSStatus AUInputUnitPropertyListener(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                     AudioDevicePropertyID inPropertyID, void *inClientData);

}  // namespace orvane
