// The pattern of the level meter: eight segments of four decibels from −32 dB up, the marker of the
// held peak, and the held level as text. Levels are 0 to 96, one step a decibel, 96 full scale.
// Plain arithmetic, any thread.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace orvane {

enum class LevelSegment { Gray, Green, Yellow, Red };

using LevelSegments = std::array<LevelSegment, 8>;  // from quiet to loud

LevelSegments levelSegments(std::int64_t peak, std::int64_t peakHold);

// "-12dB".
std::string levelText(std::int64_t peakHold);

}  // namespace orvane
