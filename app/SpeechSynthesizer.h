// A voice that says one text at a time. Main thread; nothing waits, and nothing is reported: what
// cannot be said is not said.
#pragma once

#include <string>

namespace orvane {

class SpeechSynthesizer {
 public:
  virtual ~SpeechSynthesizer() = default;

  // A text is under way: from when it was offered until it has been said or is given up.
  virtual bool isSpeaking() const = 0;
  // UTF-8. Call only while no text is under way.
  virtual void startSpeakingString(const std::string &string) = 0;
};

}  // namespace orvane
