// The control connection to the sound server, on a thread of its own (the notification thread): it
// lists the sources at the start and after every event, carries out property writes, and when the
// server goes away tries again with a new connection until it answers.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "audio/DeviceState.h"
#include "audio/PulseLoop.h"
#include "audio/PulseSource.h"
#include "audio/PulseVolumeWriter.h"
#include "audio/RetryDelay.h"

namespace orvane {

class PulseServerLink {
 public:
  // Both are called on the notification thread, with no lock held.
  struct Handlers {
    std::function<void(std::span<const PulseSource>)> listed;
    // The connection has ended or did not come about; the text says why.
    std::function<void(const std::string &)> lost;
  };

  // Starts the thread. Throws std::system_error where the system refuses a thread or a loop.
  explicit PulseServerLink(Handlers handlers);
  ~PulseServerLink();

  PulseServerLink(const PulseServerLink &) = delete;
  PulseServerLink &operator=(const PulseServerLink &) = delete;

  // Main thread. Ends the thread; waits for a running handler, never for the server. Afterwards the
  // other operations may still be called, without effect.
  void stop();

  // Any thread. Has the task run on the notification thread; it is dropped when there is no
  // connection.
  void post(std::function<void()> task);
  // Any thread. Lists once more, for a change of which the server may have told nothing.
  void listAgain();

  // Within a task only.
  void writeVolume(const DeviceState &device, UInt32 channel, UInt32 volume);
  void writePort(const std::string &source, const std::string &port);

 private:
  void run();
  void stayConnected();
  void connectionIsReady();
  void runTasks();
  void wantListing();
  void beginListing();
  void keep(pa_operation *operation);
  void fail(const std::string &reason);
  void failWithErrorOf(pa_context *context);

  static void contextStateChanged(pa_context *context, void *self);
  static void serverChanged(pa_context *context, pa_subscription_event_type_t type,
                            std::uint32_t index, void *self);
  static void cardListed(pa_context *context, const pa_card_info *card, int end, void *self);
  static void sourceListed(pa_context *context, const pa_source_info *source, int end, void *self);

  const Handlers mHandlers;
  PulseLoop mLoop;

  std::mutex mTaskMutex;
  std::vector<std::function<void()>> mTasks;
  std::atomic<bool> mListAgain{false};

  // Notification thread only.
  PulseContextPtr mContext;
  PulseVolumeWriter mVolumeWriter;
  RetryDelay mRetryDelay;
  PulseListing mListing;
  bool mIsFailed = false;
  bool mIsReady = false;
  bool mIsListingWanted = false;
  bool mIsListing = false;
  bool mIsListed = false;
  std::string mFailure;

  std::thread mThread;  // last: starts when all else is there
};

}  // namespace orvane
