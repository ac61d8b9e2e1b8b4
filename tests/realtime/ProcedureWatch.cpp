#include "tests/realtime/ProcedureWatch.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

#include "tests/realtime/RealTimeScope.h"

namespace orvane::test {

namespace {

using Kind = RealTimeEvent::Kind;

constexpr std::size_t kMostTold = 20;

// Told to a tracer from outside, which sees only system calls: nobody has such descriptors, and
// nothing happens.
constexpr int kEntryMark = -1001;
constexpr int kExitMark = -1002;

UInt32 framesOf(const AudioBufferList &input) {
  if (input.mNumberBuffers == 0 || input.mBuffers[0].mNumberChannels == 0)
    return 0;
  const AudioBuffer &buffer = input.mBuffers[0];
  return buffer.mDataByteSize / static_cast<UInt32>(sizeof(float)) / buffer.mNumberChannels;
}

bool isWakeUp(const RealTimeEvent &event, int descriptor) {
  return event.kind == Kind::kSystemCall && event.number == SYS_write &&
         event.argument == descriptor && !event.inAllocator;
}

}  // namespace

void ProcedureWatch::setCapture(const CaptureBuffer *capture, int wakeUpDescriptor) {
  mCapture = capture;
  mWakeUpDescriptor = wakeUpDescriptor;
}

OSStatus ProcedureWatch::call(AudioDeviceIOProc proc, AudioDeviceID device,
                              const AudioTimeStamp *now, const AudioBufferList *input,
                              const AudioTimeStamp *inputTime, AudioBufferList *output,
                              const AudioTimeStamp *outputTime, void *clientData) {
  const UInt32 frames = framesOf(*input);
  const UInt32 offset = mCapture->mBufferOffset;
  close(kEntryMark);
  RealTimeScope scope;
  const OSStatus status = proc(device, now, input, inputTime, output, outputTime, clientData);
  const std::span<const RealTimeEvent> events = scope.end();
  close(kExitMark);

  const long bytes = mCapture->mBufferSize;
  const UInt32 length = mCapture->mBufferFrames;
  // A block whose length was derived anew starts empty.
  const bool isNewBuffer = !events.empty() && events.front().kind == Kind::kReallocation;
  const std::uint64_t blocks =
      length == 0 ? 0 : (std::uint64_t{isNewBuffer ? 0 : offset} + frames) / length;

  const std::lock_guard lock(mMutex);
  std::uint64_t copies = 0;
  std::uint64_t wakeUps = 0;
  std::vector<std::string> wrong;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const RealTimeEvent &event = events[i];
    if (event.kind == Kind::kSystemCall && event.inAllocator)
      ++mTotals.allocatorCalls[nameOfSystemCall(event.number)];
    else if (event.kind == Kind::kAllocation && event.number == bytes && copies == wakeUps)
      ++copies;
    else if (isWakeUp(event, mWakeUpDescriptor) && wakeUps + 1 == copies)
      ++wakeUps;
    else if (!(i == 0 && event.kind == Kind::kReallocation && event.number == bytes))
      wrong.push_back(textOf(event));
    // Where wake-ups cannot be seen, each copy has had its own.
    if (!RealTimeScope::sees(Kind::kSystemCall))
      wakeUps = copies;
  }
  if (RealTimeScope::sees(Kind::kAllocation) && (copies != blocks || wakeUps != blocks))
    wrong.push_back(std::to_string(copies) + " copies and " + std::to_string(wakeUps) +
                    " wake-ups for " + std::to_string(blocks) + " blocks");

  ++mTotals.calls;
  mTotals.blocks += blocks;
  mTotals.copies += copies;
  mTotals.wakeUps += wakeUps;
  mTotals.buffers += isNewBuffer ? 1 : 0;
  mTotals.violations += wrong.size();
  for (std::string &text : wrong) {
    if (mTotals.firstViolations.size() < kMostTold)
      mTotals.firstViolations.push_back(std::move(text));
  }
  return status;
}

ProcedureWatch::Totals ProcedureWatch::totals() const {
  const std::lock_guard lock(mMutex);
  return mTotals;
}

std::string textOf(const ProcedureWatch::Totals &totals) {
  std::string text =
      std::to_string(totals.calls) + " calls, " + std::to_string(totals.blocks) + " blocks";
  if (RealTimeScope::sees(Kind::kAllocation))
    text += ", " + std::to_string(totals.copies) + " copies, " + std::to_string(totals.buffers) +
            " buffers, " + std::to_string(totals.violations) + " violations";
  if (RealTimeScope::sees(Kind::kSystemCall))
    text += ", " + std::to_string(totals.wakeUps) + " wake-ups";
  for (const auto &[name, count] : totals.allocatorCalls)
    text += "; in the allocator " + name + " " + std::to_string(count);
  return text;
}

}  // namespace orvane::test
