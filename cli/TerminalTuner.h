// The tuner behind the terminal: the same capture, detection, update loop and note computation as
// the window, with a record of what the display shows in place of its views. Main thread, but for
// the capture buffer's input procedure.
#pragma once

#include <optional>
#include <string_view>

#include "cli/CommonOptions.h"
#include "core/BlockQueue.h"
#include "core/CaptureBuffer.h"
#include "core/LampMeter.h"
#include "core/LevelMeter.h"
#include "core/NoteComputation.h"
#include "core/PitchDetector.h"
#include "core/UpdateLoop.h"

namespace orvane {

// What the display shows.
struct Display {
  NoteTexts texts;
  std::int64_t noteNumber;  // of the sounding note, in semitones from C0
  LampRow lamps;
  CentreLamp centre;     // grey when no pitch was accepted for a while
  float deviation;       // semitones
  float frequency;       // hertz
  float idealFrequency;  // hertz
  float difference;      // hertz, frequency − ideal
  LevelSegments segments;
  std::string levelText;
};

// "♯", "♭" or nothing.
inline std::string_view shownAccidental(const NoteTexts &texts) {
  return texts.mAccidentalText == " " ? std::string_view()
                                      : std::string_view(texts.mAccidentalText);
}

// One block's measurement and what the display then shows.
struct Reading {
  std::uint64_t block;            // from 0
  double time;                    // seconds, end of the block
  std::optional<float> detected;  // hertz, when the block had a pitch
  bool accepted;
  float rawPeak;          // linear, 0.0 to 1.0
  std::int64_t peak;      // 0 to 96
  std::int64_t peakHold;  // 0 to 96, before its release
  float frequency;        // hertz, accepted and smoothed
  const Display &display;

  // Below A0 and above C8 the display stays at what it showed before.
  bool isShown() const { return accepted && display.frequency == frequency; }
};

class TerminalTuner : private UpdateLoopDisplay {
 public:
  // tuning must outlive this. wakeUp: see BlockQueue.
  TerminalTuner(const Tuning &tuning, WakeUp *wakeUp);

  // The oldest waiting block measured at `now` (seconds, monotonic), or nothing when none waits.
  std::optional<Reading> takeReading(double now);

  CaptureBuffer &capture() { return mCapture; }
  const BlockQueue &queue() const { return mQueue; }
  const Display &display() const { return mDisplay; }

 private:
  void updateTunerUI() override;
  void grayCentreLamp() override;
  void setLevelMeter() override;

  const Tuning &mTuning;
  BlockQueue mQueue;
  CaptureBuffer mCapture;
  PitchDetector mDetector;
  UpdateLoop mLoop;
  Display mDisplay;
  std::uint64_t mBlocks = 0;
};

}  // namespace orvane
