// What the MPEG decoder says on standard error while it works. It cannot be asked to be silent, and
// nowhere else tells that it put silence in the place of sound, so its words are kept from standard
// error and listened to. What other threads and other code say passes through.
#pragma once

#include <string_view>

namespace orvane {

class DecoderWords {
 public:
  // While it lives, all that its thread says by way of the C library's stderr goes to words, which
  // must outlive it. The first one of the process takes stderr over for good; no other thread may
  // be writing there at that moment. May be nested.
  class Listening {
   public:
    explicit Listening(DecoderWords &words);
    ~Listening();
    Listening(const Listening &) = delete;
    Listening &operator=(const Listening &) = delete;

   private:
    DecoderWords *mBefore;
  };

  // Frames were found whose sound could not be decoded.
  bool haveBrokenFrames() const { return mHaveBrokenFrames; }
  // No frame was found where one should have begun.
  bool haveLostFrames() const { return mHaveLostFrames; }

  void hear(std::string_view line);

 private:
  bool mHaveBrokenFrames = false;
  bool mHaveLostFrames = false;
};

}  // namespace orvane
