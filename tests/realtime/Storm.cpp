#include "tests/realtime/Storm.h"

#include <QApplication>
#include <thread>

namespace orvane::test {

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

void Storm::add(const std::string &name, int weight, std::function<void()> act) {
  mActs.push_back({name, weight, std::move(act)});
}

int Storm::below(int count) {
  return static_cast<int>(mRandom.below(static_cast<std::uint64_t>(count)));
}

void Storm::rage(std::chrono::seconds ordinary) {
  int weights = 0;
  for (const Act &act : mActs)
    weights += act.weight;
  const auto seconds = longRunCount(static_cast<std::uint64_t>(ordinary.count()));
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  while (Clock::now() < end) {
    int place = below(weights);
    for (Act &act : mActs) {
      place -= act.weight;
      if (place >= 0)
        continue;
      act.act();
      ++act.count;
      break;
    }
    runEventLoop(std::chrono::milliseconds(below(4) == 0 ? 150 : below(30)));
  }
}

std::string Storm::account() const {
  std::string text = "seed " + std::to_string(longRunSeed());
  for (const Act &act : mActs)
    text += ", " + act.name + " " + std::to_string(act.count);
  return text;
}

void runEventLoop(std::chrono::milliseconds time) {
  const auto end = Clock::now() + time;
  comesTrue([end] { return Clock::now() >= end; }, time + std::chrono::seconds(1));
}

bool comesTrue(const std::function<bool()> &condition, std::chrono::milliseconds longest) {
  const auto end = Clock::now() + longest;
  while (!condition()) {
    if (Clock::now() > end)
      return false;
    QApplication::processEvents(QEventLoop::AllEvents);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace orvane::test
