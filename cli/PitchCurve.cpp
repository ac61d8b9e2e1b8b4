#include "cli/PitchCurve.h"

#include <algorithm>
#include <cmath>

#include "cli/ReadingText.h"

namespace orvane {
namespace {

// Blocks without a reading after which the same note begins anew: a fifth of a second.
constexpr int kPauseBlocks = 4;

PitchCurve::Column merged(const PitchCurve::Column &first, const PitchCurve::Column &second) {
  PitchCurve::Column both = first.readings == 0 ? second : first;
  if (first.readings != 0 && second.readings != 0) {
    both.readings += second.readings;
    both.sum += second.sum;
    both.lowest = std::min(first.lowest, second.lowest);
    both.highest = std::max(first.highest, second.highest);
    if (second.note != first.note)
      both.note = PitchCurve::kNoNote;
  }
  both.beginnings = first.beginnings + second.beginnings;
  both.begins = first.beginnings != 0 ? first.begins : second.begins;
  return both;
}

}  // namespace

void PitchCurve::add(const Reading &reading) {
  mBlocks = reading.block + 1;
  mDuration = reading.time;
  if (reading.block / mBlocksPerColumn >= kMostColumns)
    merge();
  const auto column = static_cast<std::size_t>(reading.block / mBlocksPerColumn);
  mColumns.resize(column + 1);

  const float cents = reading.display.deviation * 100.0F;
  if (!reading.isShown() || !std::isfinite(cents)) {
    if (++mPause == kPauseBlocks)
      mLastNote = kNoNote;
    return;
  }
  Column one;
  one.readings = 1;
  one.sum = static_cast<double>(cents);
  one.lowest = one.highest = cents;
  one.note = reading.display.noteNumber;
  mColumns[column] = merged(mColumns[column], one);
  noteRead(reading);
}

void PitchCurve::noteRead(const Reading &reading) {
  const std::int64_t note = reading.display.noteNumber;
  mPause = 0;
  if (note != mLastNote) {
    mLastNote = note;
    mBegin = reading.block;
    mReadingsOfNote = 0;
  }
  if (++mReadingsOfNote != kNamedReadings)
    return;
  mNames.try_emplace(note, noteText(reading.display.texts));
  Column &begin = mColumns[static_cast<std::size_t>(mBegin / mBlocksPerColumn)];
  if (begin.beginnings++ == 0)
    begin.begins = note;
}

void PitchCurve::merge() {
  mBlocksPerColumn *= 2;
  const std::size_t count = mColumns.size();
  for (std::size_t k = 0; k < count; k += 2)
    mColumns[k / 2] = k + 1 < count ? merged(mColumns[k], mColumns[k + 1]) : mColumns[k];
  mColumns.resize((count + 1) / 2);
}

double PitchCurve::timeOf(std::size_t column) const {
  const double blockSeconds = mDuration / static_cast<double>(mBlocks);
  const auto width = static_cast<double>(mBlocksPerColumn);
  return (static_cast<double>(column) * width + (width + 1.0) / 2.0) * blockSeconds;
}

}  // namespace orvane
