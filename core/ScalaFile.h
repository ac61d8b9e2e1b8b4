// Scala scale files of twelve notes: a line of description, the number of notes, and a line for
// each pitch above the implied 1/1, as cents where it has a period, else as a ratio; lines that
// begin with "!" are comments. Their degree 0 is the tonic, as that of a temperament.
// Any thread; not real-time safe (allocates).
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

struct ScalaPitch {
  double cents = 0.0;  // above degree 0
  double ratio = 1.0;  // to degree 0, above 0; the same pitch
  bool isRatio = false;
};

struct ScalaFile {
  static constexpr std::size_t kMaximumSize = std::size_t{4} << 20;  // bytes

  std::string description;               // UTF-8 without control characters; may be empty
  std::array<ScalaPitch, 12> pitches{};  // of degrees 1 to 11 and of the octave

  // bytes: UTF-8 or else ISO 8859-1, with any line ends. Pitches may stand in any order. Nothing,
  // and the reason with its line, for another number of notes than 12, a line that is no pitch, a
  // ratio that is not above 0, a pitch that single precision cannot hold, and a last pitch that
  // lies more than 0.001 cents from 2/1.
  static std::optional<ScalaFile> parse(std::string_view bytes, std::string &reason);

  // The values of a temperament file's list: ratios where all pitches below the octave are ratios,
  // else cents from equal temperament.
  std::array<std::string, 12> listValues() const;

  // A file with a row of twelve ratios, in cents with the fewest decimals, up to six, that give the
  // row when they are read as a temperament. name: one line of UTF-8. Nothing, and the reason, for
  // a ratio that is no pitch.
  static std::optional<std::string> text(const std::string &name, const float *row,
                                         std::string &reason);
};

}  // namespace orvane
