#include "audio/ListenerList.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace orvane {
namespace {

using Subject = ListenerList::Subject;

constexpr Subject kVolumeOfTwo{1, 2, true, kAudioDevicePropertyVolumeScalar};

struct Log {
  std::vector<Subject> told;
};

OSStatus writeDown(AudioDeviceID device, UInt32 channel, Boolean isInput,
                   AudioDevicePropertyID property, void *log) {
  static_cast<Log *>(log)->told.push_back({device, channel, isInput != 0, property});
  return noErr;
}

TEST(ListenerList, AListenerIsToldOfItsSubjectAndOfNoOther) {
  ListenerList list;
  Log log;
  list.add(kVolumeOfTwo, writeDown, &log);
  list.notify({2, 2, true, kAudioDevicePropertyVolumeScalar});
  list.notify({1, 1, true, kAudioDevicePropertyVolumeScalar});
  list.notify({1, 2, false, kAudioDevicePropertyVolumeScalar});
  list.notify({1, 2, true, kAudioDevicePropertyDataSource});
  EXPECT_TRUE(log.told.empty());
  list.notify(kVolumeOfTwo);
  EXPECT_EQ(log.told, std::vector<Subject>{kVolumeOfTwo});
}

TEST(ListenerList, AWildcardHearsEveryChannelAndIsToldWhich) {
  ListenerList list;
  Log log;
  Subject any = kVolumeOfTwo;
  any.channel = kAudioPropertyWildcardChannel;
  list.add(any, writeDown, &log);
  for (const UInt32 channel : {0U, 2U, 7U})
    list.notify({1, channel, true, kAudioDevicePropertyVolumeScalar});
  ASSERT_EQ(log.told.size(), 3U);
  EXPECT_EQ(log.told[0].channel, 0U);
  EXPECT_EQ(log.told[1].channel, 2U);
  EXPECT_EQ(log.told[2].channel, 7U);
}

TEST(ListenerList, AWildcardIsRemovedAsAWildcardOnly) {
  ListenerList list;
  Log log;
  Subject any = kVolumeOfTwo;
  any.channel = kAudioPropertyWildcardChannel;
  list.add(any, writeDown, &log);
  EXPECT_FALSE(list.remove(kVolumeOfTwo, writeDown));
  EXPECT_TRUE(list.remove(any, writeDown));
  EXPECT_FALSE(list.remove(any, writeDown));
  list.notify(kVolumeOfTwo);
  EXPECT_TRUE(log.told.empty());
}

TEST(ListenerList, AddingTheSameListenerTwiceTellsItOnce) {
  ListenerList list;
  Log log;
  list.add(kVolumeOfTwo, writeDown, &log);
  list.add(kVolumeOfTwo, writeDown, &log);
  list.notify(kVolumeOfTwo);
  EXPECT_EQ(log.told.size(), 1U);
}

struct SelfRemover {
  ListenerList list;
  int calls = 0;

  static OSStatus told(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
    auto *remover = static_cast<SelfRemover *>(self);
    ++remover->calls;
    remover->list.remove(kVolumeOfTwo, told);
    return noErr;
  }
};

TEST(ListenerList, AListenerMayRemoveItself) {
  SelfRemover remover;
  remover.list.add(kVolumeOfTwo, SelfRemover::told, &remover);
  remover.list.notify(kVolumeOfTwo);
  remover.list.notify(kVolumeOfTwo);
  EXPECT_EQ(remover.calls, 1);
}

struct OtherRemover {
  ListenerList list;
  Log log;

  static OSStatus told(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
    static_cast<OtherRemover *>(self)->list.remove(kVolumeOfTwo, writeDown);
    return noErr;
  }
};

TEST(ListenerList, AListenerThatIsRemovedByAnEarlierOneIsNotToldAnyMore) {
  OtherRemover remover;
  remover.list.add(kVolumeOfTwo, OtherRemover::told, &remover);
  remover.list.add(kVolumeOfTwo, writeDown, &remover.log);
  remover.list.notify(kVolumeOfTwo);
  EXPECT_TRUE(remover.log.told.empty());
}

// A listener that runs until it is let go, and removes itself first when asked to.
struct Held {
  ListenerList list;
  bool removesItself = false;
  std::promise<void> entered;
  std::promise<void> release;
  std::atomic<bool> isRunning{false};

  static OSStatus told(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
    auto *held = static_cast<Held *>(self);
    held->isRunning = true;
    if (held->removesItself)
      held->list.remove(kVolumeOfTwo, told);
    held->entered.set_value();
    held->release.get_future().wait();
    held->isRunning = false;
    return noErr;
  }
};

class ListenerListRemoval : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(, ListenerListRemoval, testing::Bool(), [](const auto &removesItself) {
  return removesItself.param ? "AlsoOneThatRemovedItself" : "OneThatStays";
});

TEST_P(ListenerListRemoval, FromAnotherThreadItWaitsForARunningCall) {
  Held held;
  held.removesItself = GetParam();
  held.list.add(kVolumeOfTwo, Held::told, &held);
  std::thread notifier([&] { held.list.notify(kVolumeOfTwo); });
  held.entered.get_future().wait();
  auto removal = std::async(std::launch::async, [&] {
    held.list.remove(kVolumeOfTwo, Held::told);
    return held.isRunning.load();
  });
  EXPECT_EQ(removal.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  held.release.set_value();
  EXPECT_FALSE(removal.get());
  notifier.join();
}

// Each round's counter goes as soon as its listener is removed; a later call would be a use after
// free, which the sanitizers see, and a count after the removal, which the test sees.
TEST(ListenerList, UnderLoadNoRemovedListenerRuns) {
  struct Counter {
    std::atomic<bool> isRemoved{false};
    std::atomic<int> *late = nullptr;
    static OSStatus told(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
      auto *counter = static_cast<Counter *>(self);
      if (counter->isRemoved)
        ++*counter->late;
      return noErr;
    }
  };
  ListenerList list;
  std::atomic<bool> quit{false};
  std::atomic<int> late{0};
  std::thread notifier([&] {
    while (!quit)
      list.notify(kVolumeOfTwo);
  });
  for (int round = 0; round < 5000; ++round) {
    auto counter = std::make_unique<Counter>();
    counter->late = &late;
    list.add(kVolumeOfTwo, Counter::told, counter.get());
    list.remove(kVolumeOfTwo, Counter::told);
    counter->isRemoved = true;
  }
  quit = true;
  notifier.join();
  EXPECT_EQ(late, 0);
}

}  // namespace
}  // namespace orvane
