// Watches the input procedure of one capture buffer at work. Each call may allocate the buffer
// where its length was derived anew, then for every block that it completes one copy of the
// buffer's bytes and wake the main thread with one write; and do nothing else.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "core/CaptureBuffer.h"

namespace orvane::test {

class ProcedureWatch {
 public:
  struct Totals {
    std::uint64_t calls = 0;
    std::uint64_t blocks = 0;
    std::uint64_t copies = 0;
    std::uint64_t buffers = 0;
    std::uint64_t wakeUps = 0;
    std::map<std::string, std::uint64_t> allocatorCalls;  // system calls, by name
    std::uint64_t violations = 0;
    std::vector<std::string> firstViolations;
  };

  // Main thread, while no input procedure runs. Null for none. Both must last as long as procedures
  // run.
  void setCapture(const CaptureBuffer *capture, int wakeUpDescriptor);

  // Input thread. Calls the procedure with what follows it and looks at what it does.
  OSStatus call(AudioDeviceIOProc proc, AudioDeviceID device, const AudioTimeStamp *now,
                const AudioBufferList *input, const AudioTimeStamp *inputTime,
                AudioBufferList *output, const AudioTimeStamp *outputTime, void *clientData);

  // Any thread.
  Totals totals() const;

 private:
  const CaptureBuffer *mCapture = nullptr;
  int mWakeUpDescriptor = -1;
  mutable std::mutex mMutex;
  Totals mTotals;
};

// The totals in a few words.
std::string textOf(const ProcedureWatch::Totals &totals);

}  // namespace orvane::test
