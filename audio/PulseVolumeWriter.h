// Volume writes, one channel at a time, on a server that only sets all channels of a source at
// once. What has been written counts as the source's volume until the server has told a newer one,
// so that consecutive writes of several channels do not undo one another.
//
// Notification thread only.
#pragma once

#include <pulse/pulseaudio.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "audio/DeviceState.h"

namespace orvane {

class PulseVolumeWriter {
 public:
  // onSettled is called when the server has answered all that was sent.
  explicit PulseVolumeWriter(std::function<void()> onSettled);

  // channel: from 1; the device as the mirror holds it now.
  void set(const DeviceState &device, UInt32 channel, UInt32 volume);
  // Sends what was set, one request a source.
  void send(pa_context *context);

  // To be told: a listing is being asked for, has been taken over, the connection has ended.
  void listingBegins();
  void listingEnded();
  void connectionEnded();

 private:
  struct Wanted {
    std::vector<UInt32> volumes;
    bool isSent = false;
  };

  static void answered(pa_context *context, int success, void *self);

  std::function<void()> mOnSettled;
  std::map<std::string, Wanted> mWanted;  // by the source's lasting name
  int mUnanswered = 0;
  bool mListingIsNewer = false;  // the listing under way was asked for after the last answer
};

}  // namespace orvane
