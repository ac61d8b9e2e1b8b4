// What the tuner asks of the desktop beyond its own windows. DesktopSystem answers it; tests watch
// it. Main thread.
#pragma once

#include <memory>
#include <string>

#include "app/SpeechSynthesizer.h"

namespace orvane {

class System {
 public:
  virtual ~System() = default;

  virtual void beep() = 0;
  // The system's sound settings, and then their input page. Neither waits; whether anything opens
  // is not told.
  virtual void openSoundSettings() = 0;
  virtual void showSoundInputPage() = 0;
  // A modal alert with one button; returns when it is dismissed.
  virtual void runAlertPanel(const std::string &title, const std::string &message,
                             const std::string &button) = 0;
  // Has the application quit as soon as its event loop runs.
  virtual void terminate() = 0;
  // Never null. Touches no speech service before it is given a text.
  virtual std::unique_ptr<SpeechSynthesizer> makeSpeechSynthesizer() = 0;
  // One line of the program's log.
  virtual void log(const std::string &line) = 0;
};

}  // namespace orvane
