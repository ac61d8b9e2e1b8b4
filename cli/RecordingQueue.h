// Recordings analysed in their order. Several are worked on at once, by a thread for each core;
// what they say is handed out as if one had been read after the other. What waits for its turn is
// held back in kMostWaiting bytes for all of them together; a recording that finds no room waits,
// but for the one whose turn it is.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "cli/RecordingAnalysis.h"

namespace orvane {

class RecordingQueue {
 public:
  static constexpr std::size_t kMostWaiting = std::size_t{16} << 20;  // bytes

  // All must outlive this. Starts no thread for a single recording or a single core.
  RecordingQueue(const std::vector<std::string> &files, const AnalysisOrder &order,
                 const Tuning &tuning);
  // Ends what is still being worked on.
  ~RecordingQueue();
  RecordingQueue(const RecordingQueue &) = delete;
  RecordingQueue &operator=(const RecordingQueue &) = delete;

  // Main thread. The next recording in order: passes on its text and how far it is, and returns at
  // its end. Throws as analyzeRecording does. To be called once for each of the files.
  AnalysisResult takeNext(AnalysisOutput &output);

 private:
  class Writer;
  struct Recording {
    std::vector<std::string> waiting;  // text, in pieces
    std::int64_t done = 0;             // frames
    std::int64_t total = 0;
    bool isOver = false;
    AnalysisResult result;
    std::exception_ptr error;
  };

  void work();
  void analyze(std::size_t index);

  const std::vector<std::string> &mFiles;
  const AnalysisOrder &mOrder;
  const Tuning &mTuning;
  std::vector<std::thread> mThreads;
  std::atomic<bool> mIsStopped{false};

  std::mutex mMutex;  // of all that follows
  std::condition_variable mHasNews;
  std::condition_variable mHasRoom;
  std::vector<Recording> mRecordings;
  std::size_t mBegun = 0;         // recordings that a thread has taken
  std::size_t mTurn = 0;          // the recording that is handed out
  std::size_t mWaitingBytes = 0;  // of all recordings
};

}  // namespace orvane
