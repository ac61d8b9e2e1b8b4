#include "audio/PulseServerLink.h"

#include <system_error>
#include <utility>

#include "audio/BackgroundThread.h"

namespace orvane {

PulseServerLink::PulseServerLink(Handlers handlers)
    : mHandlers(std::move(handlers)), mVolumeWriter([this] { wantListing(); }) {
  if (!mLoop.isValid())
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  mThread = startBackgroundThread([this] { run(); });
}

PulseServerLink::~PulseServerLink() {
  stop();
}

void PulseServerLink::stop() {
  mLoop.quit();
  if (mThread.joinable())
    mThread.join();
}

void PulseServerLink::post(std::function<void()> task) {
  {
    const std::lock_guard lock(mTaskMutex);
    mTasks.push_back(std::move(task));
  }
  mLoop.wake();
}

void PulseServerLink::listAgain() {
  mListAgain.store(true);
  mLoop.wake();
}

void PulseServerLink::writeVolume(const DeviceState &device, UInt32 channel, UInt32 volume) {
  mVolumeWriter.set(device, channel, volume);
}

void PulseServerLink::writePort(const std::string &source, const std::string &port) {
  keep(pa_context_set_source_port_by_name(mContext.get(), source.c_str(), port.c_str(), nullptr,
                                          nullptr));
}

void PulseServerLink::run() {
  while (!mLoop.isQuitting()) {
    stayConnected();
    mVolumeWriter.connectionEnded();
    mContext.reset();
    runTasks();
    if (mLoop.isQuitting())
      return;
    mHandlers.lost(mFailure);
    mLoop.runFor(mRetryDelay.next());
  }
}

void PulseServerLink::stayConnected() {
  mIsFailed = mIsReady = mIsListingWanted = mIsListing = mIsListed = false;
  // A connection that has failed never revives, so each attempt takes a new one.
  mContext.reset(pa_context_new(mLoop.api(), kPulseClientName));
  if (mContext == nullptr)
    return fail("out of memory");
  pa_context_set_state_callback(mContext.get(), contextStateChanged, this);
  if (pa_context_connect(mContext.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
    return failWithErrorOf(mContext.get());

  while (!mIsFailed && !mLoop.isQuitting()) {
    mLoop.iterate();
    if (std::exchange(mIsListed, false)) {
      mIsListing = false;
      mRetryDelay.reset();
      // Told from here and not from within the library's callback, so that a listener may take its
      // time.
      mHandlers.listed(mListing.sources());
      mVolumeWriter.listingEnded();
    }
    runTasks();
    if (mListAgain.exchange(false))
      wantListing();
    if (mIsReady && !mIsFailed && mIsListingWanted && !mIsListing)
      beginListing();
  }
}

void PulseServerLink::runTasks() {
  std::vector<std::function<void()>> tasks;
  {
    const std::lock_guard lock(mTaskMutex);
    tasks.swap(mTasks);
  }
  if (mContext == nullptr || !mIsReady || mIsFailed)
    return;
  for (const auto &task : tasks)
    task();
  mVolumeWriter.send(mContext.get());
}

void PulseServerLink::connectionIsReady() {
  mIsReady = true;
  pa_context_set_subscribe_callback(mContext.get(), serverChanged, this);
  keep(pa_context_subscribe(
      mContext.get(),
      static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_CARD),
      nullptr, nullptr));
  wantListing();
}

void PulseServerLink::wantListing() {
  mIsListingWanted = true;
}

void PulseServerLink::beginListing() {
  mIsListingWanted = false;
  mIsListing = true;
  mListing = {};
  mVolumeWriter.listingBegins();
  // The answers come in the order of the questions.
  keep(pa_context_get_card_info_list(mContext.get(), cardListed, this));
  keep(pa_context_get_source_info_list(mContext.get(), sourceListed, this));
}

// A request that cannot even be sent means that the connection is dead.
void PulseServerLink::keep(pa_operation *operation) {
  if (operation != nullptr)
    pa_operation_unref(operation);
  else
    failWithErrorOf(mContext.get());
}

void PulseServerLink::fail(const std::string &reason) {
  if (!std::exchange(mIsFailed, true))
    mFailure = reason;
}

void PulseServerLink::failWithErrorOf(pa_context *context) {
  fail(pa_strerror(pa_context_errno(context)));
}

void PulseServerLink::contextStateChanged(pa_context *context, void *self) {
  auto *link = static_cast<PulseServerLink *>(self);
  const pa_context_state_t state = pa_context_get_state(context);
  if (state == PA_CONTEXT_READY)
    link->connectionIsReady();
  else if (!PA_CONTEXT_IS_GOOD(state))
    link->failWithErrorOf(context);
}

void PulseServerLink::serverChanged(pa_context * /*context*/, pa_subscription_event_type_t /*type*/,
                                    std::uint32_t /*index*/, void *self) {
  static_cast<PulseServerLink *>(self)->wantListing();
}

// A server that does not tell its cards is used without them.
void PulseServerLink::cardListed(pa_context * /*context*/, const pa_card_info *card, int end,
                                 void *self) {
  if (end == 0 && card != nullptr)
    static_cast<PulseServerLink *>(self)->mListing.addCard(*card);
}

void PulseServerLink::sourceListed(pa_context *context, const pa_source_info *source, int end,
                                   void *self) {
  auto *link = static_cast<PulseServerLink *>(self);
  if (end < 0)
    link->failWithErrorOf(context);
  else if (end > 0)
    link->mIsListed = true;
  else if (source != nullptr)
    link->mListing.addSource(*source);
}

}  // namespace orvane
