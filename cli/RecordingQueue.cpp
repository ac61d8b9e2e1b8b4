#include "cli/RecordingQueue.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvane {
namespace {

constexpr std::size_t kPieceBytes = 1 << 16;

// Ends a thread's work where it stands.
struct Stopped {};

}  // namespace

// Collects the text of a recording in pieces. Thread of the recording.
class RecordingQueue::Writer : public AnalysisOutput {
 public:
  Writer(RecordingQueue &queue, std::size_t index) : mQueue(queue), mIndex(index) {}

  void write(std::string_view text) override {
    mPiece += text;
    if (mPiece.size() >= kPieceBytes)
      pass();
  }

  void advanceTo(std::int64_t done, std::int64_t total) override {
    if (mQueue.mIsStopped.load(std::memory_order_relaxed))
      throw Stopped();
    const std::int64_t percent = total >= 100 ? done / (total / 100) : 0;
    if (percent == mPercent)
      return;
    mPercent = percent;
    const std::lock_guard lock(mQueue.mMutex);
    Recording &recording = mQueue.mRecordings[mIndex];
    recording.done = done;
    recording.total = total;
    if (mQueue.mTurn == mIndex)
      mQueue.mHasNews.notify_one();
  }

  void pass() {
    std::unique_lock lock(mQueue.mMutex);
    Recording &recording = mQueue.mRecordings[mIndex];
    mQueue.mHasRoom.wait(lock, [&] {
      return mQueue.mIsStopped || mQueue.mWaitingBytes + mPiece.size() <= kMostWaiting ||
             (mQueue.mTurn == mIndex && recording.waiting.empty());
    });
    if (mQueue.mIsStopped)
      throw Stopped();
    mQueue.mWaitingBytes += mPiece.size();
    recording.waiting.push_back(std::exchange(mPiece, {}));
    if (mQueue.mTurn == mIndex)
      mQueue.mHasNews.notify_one();
  }

 private:
  RecordingQueue &mQueue;
  std::size_t mIndex;
  std::string mPiece;
  std::int64_t mPercent = 0;
};

RecordingQueue::RecordingQueue(const std::vector<std::string> &files, const AnalysisOrder &order,
                               const Tuning &tuning)
    : mFiles(files), mOrder(order), mTuning(tuning), mRecordings(files.size()) {
  const std::size_t threads =
      std::min<std::size_t>(files.size(), std::thread::hardware_concurrency());
  if (threads < 2)
    return;
  mThreads.reserve(threads);
  try {
    while (mThreads.size() < threads)
      mThreads.emplace_back(&RecordingQueue::work, this);
  } catch (const std::exception &) {
    // As many as the system gives.
  }
}

RecordingQueue::~RecordingQueue() {
  {
    const std::lock_guard lock(mMutex);
    mIsStopped = true;
  }
  mHasRoom.notify_all();
  for (std::thread &thread : mThreads)
    thread.join();
}

void RecordingQueue::work() {
  while (!mIsStopped) {
    std::size_t index = 0;
    {
      const std::lock_guard lock(mMutex);
      index = mBegun;
      if (index == mFiles.size())
        return;
      ++mBegun;
    }
    analyze(index);
  }
}

void RecordingQueue::analyze(std::size_t index) {
  AnalysisResult result;
  std::exception_ptr error;
  try {
    Writer writer(*this, index);
    result = analyzeRecording(mFiles[index], mOrder, mTuning, writer);
    writer.pass();
  } catch (const Stopped &) {
    return;
  } catch (...) {
    error = std::current_exception();
  }
  const std::lock_guard lock(mMutex);
  Recording &recording = mRecordings[index];
  recording.result = std::move(result);
  recording.error = error;
  recording.isOver = true;
  if (mTurn == index)
    mHasNews.notify_one();
}

AnalysisResult RecordingQueue::takeNext(AnalysisOutput &output) {
  std::unique_lock lock(mMutex);
  const std::size_t index = mTurn;
  if (mThreads.empty()) {
    ++mTurn;
    lock.unlock();
    return analyzeRecording(mFiles[index], mOrder, mTuning, output);
  }
  Recording &recording = mRecordings[index];
  std::int64_t shown = 0;
  bool isOver = false;
  while (!isOver) {
    mHasNews.wait(lock, [&] {
      return !recording.waiting.empty() || recording.done != shown || recording.isOver;
    });
    const std::vector<std::string> text = std::exchange(recording.waiting, {});
    for (const std::string &piece : text)
      mWaitingBytes -= piece.size();
    shown = recording.done;
    const std::int64_t total = recording.total;
    isOver = recording.isOver;
    lock.unlock();
    mHasRoom.notify_all();
    for (const std::string &piece : text)
      output.write(piece);
    output.advanceTo(shown, total);
    lock.lock();
  }
  ++mTurn;
  lock.unlock();
  mHasRoom.notify_all();  // the next recording may find room that others do not
  if (recording.error)
    std::rethrow_exception(recording.error);
  return std::move(recording.result);
}

}  // namespace orvane
