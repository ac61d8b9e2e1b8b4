// A progress bar on standard error, shown only when that is a terminal and the work is long.
// Main thread.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

class Output;

class ProgressBar {
 public:
  // Clears itself before output writes anything, so that the two may share a terminal; output must
  // outlive it. total: units of work; 0 or less when unknown, and nothing is then shown.
  ProgressBar(Output &output, const std::string &title, std::int64_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar &) = delete;
  ProgressBar &operator=(const ProgressBar &) = delete;

  void advanceTo(std::int64_t done);

 private:
  void draw();
  void clear();

  Output &mOutput;
  std::string mTitle;
  std::int64_t mTotal;
  bool mIsWanted;
  bool mIsDrawn = false;
  int mPercent = -1;
};

}  // namespace orvane
