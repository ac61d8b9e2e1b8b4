// How far a test goes that can go on for as long as one likes, and its own random numbers. In the
// ordinary run of all tests it goes a short way from a fixed seed; the scripts beside it set
// ORVANE_LONG_COUNT and ORVANE_LONG_SEED. What fails names the seed that repeats it alone.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

namespace orvane::test {

inline std::uint64_t longRunNumber(const char *variable, std::uint64_t otherwise) {
  const char *text = std::getenv(variable);
  return text == nullptr || *text == '\0' ? otherwise : std::stoull(text);
}

// How many sequences, hours or buffers; shortRun in the ordinary run.
inline std::uint64_t longRunCount(std::uint64_t shortRun) {
  return longRunNumber("ORVANE_LONG_COUNT", shortRun);
}

inline std::uint64_t longRunSeed() {
  return longRunNumber("ORVANE_LONG_SEED", 1);
}

// SplitMix64: every seed gives a sequence of its own, the same with every library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : mState(seed) {}

  std::uint64_t next() {
    mState += 0x9E3779B97F4A7C15U;
    std::uint64_t z = mState;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
  }
  // 0 to limit − 1.
  std::uint64_t below(std::uint64_t limit) { return next() % limit; }
  bool chance(unsigned perCent) { return below(100) < perCent; }
  template <typename List>
  const auto &pick(const List &list) {
    return list[below(list.size())];
  }

 private:
  std::uint64_t mState;
};

}  // namespace orvane::test
