// A progress bar on standard error, shown only when that is a terminal, the output goes elsewhere
// and the work is long.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

class ProgressBar {
 public:
  // total: units of work; 0 or less when unknown, and nothing is then shown.
  ProgressBar(std::string title, std::int64_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar &) = delete;
  ProgressBar &operator=(const ProgressBar &) = delete;

  void advanceTo(std::int64_t done);

 private:
  std::string mTitle;
  std::int64_t mTotal;
  bool mShown;
  int mPercent = -1;
};

}  // namespace orvane
