#include "core/LevelMeter.h"

#include <algorithm>

namespace orvane {

LevelSegments levelSegments(std::int64_t peak, std::int64_t peakHold) {
  LevelSegments segments;
  segments.fill(LevelSegment::Gray);

  if (peak > 60) {
    const std::int64_t lit = (9 * peak - 540) / 36;
    if (lit >= 1 && lit <= 9) {
      std::fill_n(segments.begin(), std::min<std::int64_t>(lit, 8), LevelSegment::Green);
      if (lit == 9)
        segments[7] = LevelSegment::Red;
    }
  }

  if (peakHold >= 61) {
    const std::int64_t height = 9 * peakHold - 540;
    if (height >= 36) {
      const std::int64_t position = std::min<std::int64_t>(height / 36, 8);
      segments[static_cast<std::size_t>(position - 1)] =
          height > 323 ? LevelSegment::Red : LevelSegment::Yellow;
    }
  }
  return segments;
}

std::string levelText(std::int64_t peakHold) {
  return std::to_string(peakHold - 96) + "dB";
}

}  // namespace orvane
