// What the readings of one recording say together: of each note shown, how often it was read and
// where its cents lie, and how the cents drift over the recording. In memory that depends
// on the number of notes only: cents are whole numbers, and one note has about a hundred of them.
// One thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "cli/TerminalTuner.h"

namespace orvane {

class ReadingSummary {
 public:
  // Cents of one note.
  struct Spread {
    std::uint64_t readings;
    double median;
    // Third quartile less first. A quartile lies at a quarter of the way from the first to the last
    // of the ordered readings, between two of them in proportion.
    double interquartileRange;
  };

  // A reading that is not shown is left out.
  void add(const Reading &reading);

  // Cents a minute: the slope of the straight line of least squares through the cents of all
  // readings over their times. Nothing with fewer than two readings.
  std::optional<double> drift() const;

  // Several lines for people, notes from low to high.
  std::string text() const;
  // One line. file is named in it when it is not empty.
  std::string json(std::string_view file) const;

 private:
  using Histogram = std::map<std::int32_t, std::uint64_t>;  // readings of each number of cents
  struct Note {
    NoteTexts texts;
    Histogram cents;
  };

  static Spread spread(const Histogram &cents);

  std::map<std::int64_t, Note> mNotes;  // by number of the sounding note
  // Means and sums of squared differences from them, kept up to date with each reading.
  std::uint64_t mReadings = 0;
  double mMeanTime = 0.0;   // seconds
  double mMeanCents = 0.0;  // cents
  double mTimeSquares = 0.0;
  double mTimeTimesCents = 0.0;
};

}  // namespace orvane
