// How far the readings of one recording lie from their notes, along its time, in a
// picture's worth of memory: readings that follow each other share a column once there are too many
// for one each. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cli/TerminalTuner.h"

namespace orvane {

class PitchCurve {
 public:
  static constexpr std::size_t kMostColumns = 1200;
  // A note is named where it begins once it was read so often in a row.
  static constexpr int kNamedReadings = 3;
  static constexpr std::int64_t kNoNote = -1;

  // The readings of as many blocks as every column stands for.
  struct Column {
    std::uint64_t readings = 0;  // shown ones; without any, their cents and note mean nothing
    double sum = 0.0;            // cents
    float lowest = 0.0F;         // cents
    float highest = 0.0F;
    std::int64_t note = kNoNote;    // number of the sounding note of all readings, if it is one
    std::uint64_t beginnings = 0;   // of notes that are named
    std::int64_t begins = kNoNote;  // the first of them

    double mean() const { return sum / static_cast<double>(readings); }
  };

  // Every reading of the recording in order. One whose cents are no number counts as not shown.
  void add(const Reading &reading);

  const std::vector<Column> &columns() const { return mColumns; }
  bool isOfSingleReadings() const { return mBlocksPerColumn == 1; }
  double duration() const { return mDuration; }  // seconds, to the end of the last block
  // Seconds from the start: the middle of the times of the column's readings.
  double timeOf(std::size_t column) const;
  // "C♯4": a note of a column as it is shown.
  const std::string &nameOf(std::int64_t note) const { return mNames.at(note); }

 private:
  void merge();
  void noteRead(const Reading &reading);

  std::vector<Column> mColumns;
  std::uint64_t mBlocksPerColumn = 1;
  std::uint64_t mBlocks = 0;
  double mDuration = 0.0;
  std::map<std::int64_t, std::string> mNames;

  std::int64_t mLastNote = kNoNote;  // of the latest shown reading; none after a pause
  std::uint64_t mBegin = 0;          // block of its first reading
  int mReadingsOfNote = 0;
  int mPause = 0;  // blocks without a reading since
};

}  // namespace orvane
