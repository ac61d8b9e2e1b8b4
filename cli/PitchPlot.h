// Cents over time as a picture for people: one SVG drawing with a panel for each recording, which
// needs nothing besides itself and is light or dark as its reader's desktop is. Its size is bounded
// whatever the length of the recordings. Main thread.
#pragma once

#include <string>

#include "cli/CommonOptions.h"
#include "cli/PitchCurve.h"

namespace orvane {

class PitchPlot {
 public:
  // tuning must outlive this.
  explicit PitchPlot(const Tuning &tuning) : mTuning(tuning) {}

  void add(const std::string &file, const PitchCurve &curve);
  bool isEmpty() const { return mPanels == 0; }
  std::string svg() const;

 private:
  std::string subtitle() const;

  const Tuning &mTuning;
  std::string mBody;
  int mPanels = 0;
};

}  // namespace orvane
