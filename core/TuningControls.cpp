#include "core/TuningControls.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/SignedText.h"

namespace orvane {
namespace {

constexpr std::array<const char *, 12> kPitchClassNames = {
    "C", "C#/Db", "D", "D#/Eb", "E", "F", "F#/Gb", "G", "G#/Ab", "A", "A#/Bb", "B"};

constexpr std::int64_t kItemOfNoTransposition = 11;

}  // namespace

ReferencePitchEntry acceptedReferencePitch(float typed) {
  // Written so that not-a-number is too low.
  if (!(typed >= kLowestReferencePitch))
    return {kLowestReferencePitch, true};
  if (static_cast<double>(typed) > kHighestReferencePitch)
    return {static_cast<float>(kHighestReferencePitch), true};
  return {typed, false};
}

const char *pitchClassName(int pitchClass) {
  return kPitchClassNames[static_cast<std::size_t>(pitchClass)];
}

float tonicFrequency(int pitchClass, const TuningSettings &settings,
                     const TemperamentTables &temperaments) {
  if (settings.mTuning == 0)
    return static_cast<float>(static_cast<double>(settings.mReferencePitch) *
                              std::exp2(static_cast<double>(pitchClass - 9) / 12.0));

  const float *row = temperaments.row(static_cast<std::size_t>(settings.mTuning - 1));
  const std::int64_t tonic = settings.mTonic;
  // The display divides first; the last bit may differ.
  const float product = settings.mReferencePitch * row[(pitchClass - tonic + 12) % 12];
  const float frequency = product / row[(21 - tonic) % 12];
  if (tonic < 10)
    return pitchClass < tonic ? frequency / 2.0F : frequency;
  return pitchClass >= tonic ? frequency * 2.0F : frequency;
}

std::string tonicTitle(int pitchClass, const TuningSettings &settings,
                       const TemperamentTables &temperaments) {
  const float frequency = tonicFrequency(pitchClass, settings, temperaments);
  return std::string(pitchClassName(pitchClass)) + " (" + hertzString(frequency) + ")";
}

std::string transposeText(std::int64_t transpose) {
  if (transpose == 0)
    return {};
  const std::int64_t pitchClass = (transpose + 12) % 12;
  return std::string("C = ") + pitchClassName(static_cast<int>(pitchClass)) +
         (transpose < 0 ? " (" : " (+") + std::to_string(transpose) + ")";
}

std::int64_t tuningOfItem(std::int64_t index) {
  return std::max<std::int64_t>(index - 1, 0);
}

std::int64_t itemOfTuning(std::int64_t tuning) {
  return tuning == 0 ? 0 : tuning + 1;
}

std::int64_t transposeOfItem(std::int64_t index) {
  return index - kItemOfNoTransposition;
}

std::int64_t itemOfTranspose(std::int64_t transpose) {
  return transpose + kItemOfNoTransposition;
}

}  // namespace orvane
