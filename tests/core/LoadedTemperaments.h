// What the tests of the temperaments share: tables with the log lines of their loading, and rows
// computed with 60 decimal digits, rounded to single precision after each step.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/TemperamentTables.h"

namespace orvane {

using Row = std::array<float, 12>;

inline const std::string kInvalidLine = "*** Invalid Temperament Pitch Table. ***";
inline const std::string kTwelveZeros = "0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0";

inline constexpr Row kEqualRow = {0x1p+0F,        0x1.0f38fap+0F, 0x1.1f59acp+0F, 0x1.306fep+0F,
                                  0x1.428a3p+0F,  0x1.55b81p+0F,  0x1.6a09e6p+0F, 0x1.7f910ep+0F,
                                  0x1.965feap+0F, 0x1.ae89fap+0F, 0x1.c823ep+0F,  0x1.e3437ep+0F};

inline constexpr Row kBuiltInRow = {0x1p+0F,     0x1.116p+0F,    0x1.2p+0F,      0x1.2f684cp+0F,
                                    0x1.44p+0F,  0x1.555556p+0F, 0x1.6c8p+0F,    0x1.8p+0F,
                                    0x1.9a1p+0F, 0x1.bp+0F,      0x1.c71c72p+0F, 0x1.e6p+0F};

struct Loaded {
  TemperamentTables tables;
  std::vector<std::string> log;

  void load(const std::filesystem::path &file) {
    tables.load(file, [this](const std::string &line) { log.push_back(line); });
  }
  // ASCII only.
  void loadText(std::string_view text) {
    tables.loadText(std::u16string(text.begin(), text.end()), "test",
                    [this](const std::string &line) { log.push_back(line); });
  }
  Row row(std::size_t index) const {
    Row values{};
    std::copy_n(tables.row(index), values.size(), values.begin());
    return values;
  }
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < tables.rowCount(); ++i)
      names.push_back(tables.name(i));
    return names;
  }
};

inline Loaded loadedText(std::string_view text) {
  Loaded loaded;
  loaded.loadText(text);
  return loaded;
}

inline void expectBuiltIn(const Loaded &loaded) {
  EXPECT_EQ(loaded.names(), std::vector<std::string>{"Pythagorean"});
  EXPECT_EQ(loaded.tables.mTemperamentCount, 1);
  EXPECT_EQ(loaded.row(0), kBuiltInRow);
  ASSERT_NE(loaded.tables.mTemperaments.find("Pythagorean"), nullptr);
}

inline void expectBuiltIn(const Loaded &loaded, const std::string &error) {
  expectBuiltIn(loaded);
  EXPECT_EQ(loaded.log,
            std::vector<std::string>{"failed to read Temperaments.txt. error: " + error});
}

}  // namespace orvane
