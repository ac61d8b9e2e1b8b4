#include "audio/ListenerList.h"

#include <algorithm>

namespace orvane {

void ListenerList::add(const Subject &subject, AudioDevicePropertyListenerProc proc,
                       void *clientData) {
  const std::lock_guard lock(mMutex);
  const bool known = std::ranges::any_of(mEntries, [&](const Entry &entry) {
    return entry.subject == subject && entry.proc == proc && entry.clientData == clientData;
  });
  if (!known)
    mEntries.push_back({mNextKey++, subject, proc, clientData});
}

bool ListenerList::remove(const Subject &subject, AudioDevicePropertyListenerProc proc) {
  std::unique_lock lock(mMutex);
  const auto removed = std::erase_if(
      mEntries, [&](const Entry &entry) { return entry.subject == subject && entry.proc == proc; });
  mCallEnded.wait(lock, [&] { return !runsElsewhere(subject, proc); });
  return removed > 0;
}

void ListenerList::notify(const Subject &change) {
  std::unique_lock lock(mMutex);
  std::vector<std::uint64_t> matching;
  for (const Entry &entry : mEntries) {
    Subject heard = entry.subject;
    if (heard.channel == kAudioPropertyWildcardChannel)
      heard.channel = change.channel;
    if (heard == change)
      matching.push_back(entry.key);
  }

  for (const std::uint64_t key : matching) {
    const auto found = std::ranges::find(mEntries, key, &Entry::key);
    if (found == mEntries.end())
      continue;
    const Entry entry = *found;
    mCalls.push_back({entry, std::this_thread::get_id()});
    lock.unlock();
    entry.proc(change.device, change.channel, change.isInput ? 1 : 0, change.property,
               entry.clientData);
    lock.lock();
    mCalls.erase(std::ranges::find_if(mCalls, [key](const Call &call) {
      return call.entry.key == key && call.thread == std::this_thread::get_id();
    }));
    mCallEnded.notify_all();
  }
}

bool ListenerList::runsElsewhere(const Subject &subject,
                                 AudioDevicePropertyListenerProc proc) const {
  return std::ranges::any_of(mCalls, [&](const Call &call) {
    return call.entry.subject == subject && call.entry.proc == proc &&
           call.thread != std::this_thread::get_id();
  });
}

}  // namespace orvane
