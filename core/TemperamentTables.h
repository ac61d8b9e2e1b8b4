// The unequal temperaments: read once from a UTF-16 property list that maps names to lists of
// ratios or cents, kept as rows of twelve frequency ratios to the tonic, sorted by name. A file
// that cannot be used is answered with a built-in table that holds one temperament, "Pythagorean".
// Main thread only; not real-time safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/PropertyList.h"

namespace orvane {

class TemperamentTables {
 public:
  using Log = std::function<void(const std::string &)>;

  static constexpr std::size_t kDegreeCount = 12;
  // Room for about 10,000 temperaments; keeps memory bounded whatever file is named.
  static constexpr std::size_t kMaximumFileSize = std::size_t{4} << 20;  // bytes

  // Replaces everything by the temperaments of the file. Never fails: a file that is missing, no
  // regular file, unreadable, larger than kMaximumFileSize, no UTF-16, no property list or no
  // dictionary of lists gives the built-in table and one log line,
  //   failed to read Temperaments.txt. error: PATH: REASON
  // where an error in the text has its line and column. Each list of fewer than 12 entries is left
  // out with the line "*** Invalid Temperament Pitch Table. ***". An empty log is allowed.
  void load(const std::filesystem::path &file, const Log &log);

  // The same for a text that is in memory; source takes the place of the path in the log line.
  void loadText(std::u16string_view text, const std::string &source, const Log &log);

  // Temperaments that were accepted, in menu order: by name without regard to case, names equal in
  // that order as the file has them. row is 0 to rowCount() - 1.
  std::size_t rowCount() const { return mNames.size(); }
  const std::string &name(std::size_t row) const { return mNames[row]; }
  // 12 ratios to the tonic, element 0 is 1.0. Valid until the next load.
  const float *row(std::size_t row) const { return mTemperamentTables.get() + row * kDegreeCount; }
  // The ratio to the tonic that a list's cents from equal temperament give a degree, 0 to 11.
  static float ratioOf(float cents, std::size_t degree);
  // "cents = (…)": how far each degree lies from equal temperament, to three decimals, with
  // degree 9 (A when the tonic is C) at zero.
  const std::string &toolTip(std::size_t row) const { return mToolTips[row]; }

  // Written by load, read-only for everyone else.
  PropertyListDictionary mTemperaments;         // the file's contents, rejected lists included
  std::unique_ptr<float[]> mTemperamentTables;  // row r starts at element 12 * r
  std::int64_t mTemperamentCount = 0;           // names in the file less the rejected ones

 private:
  // Without temperaments the error is logged and the built-in table used.
  void build(std::optional<PropertyListDictionary> temperaments, const std::string &error,
             const Log &log);

  std::vector<std::string> mNames;
  std::vector<std::string> mToolTips;
};

}  // namespace orvane
