// Plays one sound file to an input procedure at the file's own pace, over and over, on a thread of
// its own. This thread is the input thread of the file's device. It reads the disk and therefore
// runs with ordinary priority.
#pragma once

#include <functional>
#include <stop_token>
#include <thread>

#include "audio/AudioHardware.h"
#include "audio/PlaybackClock.h"
#include "audio/SoundFile.h"

namespace orvane {

class RecordingPlayer {
 public:
  // onDead is called on the input thread, as the last thing it does, when a whole pass through the
  // file gives no frame. file and clock must outlive the player; file is the player's own while it
  // plays.
  RecordingPlayer(SoundFile &file, PlaybackClock &clock, AudioDeviceID device,
                  std::function<void()> onDead);
  ~RecordingPlayer() { stop(); }
  RecordingPlayer(const RecordingPlayer &) = delete;
  RecordingPlayer &operator=(const RecordingPlayer &) = delete;

  // Main thread. From the first frame on, with a sample clock that starts at 1 and goes on when the
  // file starts again. Throws std::system_error when the system refuses a thread.
  void start(AudioDeviceIOProc proc, void *clientData);
  // Main thread. Once it returns, the procedure is not running and will not run again.
  void stop();

 private:
  void run(AudioDeviceIOProc proc, void *clientData, const std::stop_token &stop);

  SoundFile &mFile;
  PlaybackClock &mClock;
  const AudioDeviceID mDevice;
  std::function<void()> mOnDead;
  std::stop_source mStop;
  std::thread mThread;
};

}  // namespace orvane
