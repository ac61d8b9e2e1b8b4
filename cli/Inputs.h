// The audio hardware a command works with: the sound server, or sound files in its place.
// Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane {

class PulseAudioHardware;

class Inputs {
 public:
  // No files: the sound server. Throws CliError (exit 1) that names a file that cannot be used.
  explicit Inputs(const std::vector<std::string> &files);
  ~Inputs();

  AudioHardware &hardware() const { return *mHardware; }
  bool isServer() const { return mServer != nullptr; }

  // Call after the devices have been listed. Throws CliError (exit 1) with the reason when the
  // sound server cannot be reached.
  void checkReached() const;

 private:
  std::unique_ptr<AudioHardware> mHardware;
  PulseAudioHardware *mServer = nullptr;
};

}  // namespace orvane
