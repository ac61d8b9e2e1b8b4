#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

#include "cli/CliError.h"
#include "cli/Output.h"
#include "cli/Terminal.h"

namespace orvane {
namespace {

constexpr std::size_t kWidestBar = 40;
constexpr std::size_t kNarrowestTitleAndBar = 10;
constexpr std::int64_t kLongWork = 10'000'000;  // frames: read in a good part of a second

}  // namespace

ProgressBar::ProgressBar(Output &output, const std::string &title, std::int64_t total)
    : mOutput(output),
      mTitle(oneLine(title)),
      mTotal(total),
      mIsWanted(total >= kLongWork && ::isatty(STDERR_FILENO) == 1) {
  if (mIsWanted)
    mOutput.setBeforeFlush([this] { clear(); });
}

ProgressBar::~ProgressBar() {
  clear();
  if (mIsWanted)
    mOutput.setBeforeFlush({});
}

void ProgressBar::advanceTo(std::int64_t done) {
  if (!mIsWanted)
    return;
  const int percent = static_cast<int>(std::clamp<std::int64_t>(done / (mTotal / 100), 0, 100));
  if (percent == mPercent)
    return;
  mPercent = percent;
  draw();
}

// Within one row: a line that wraps could not be rewritten.
void ProgressBar::draw() {
  constexpr std::size_t kPercentWidth = 5;   // " 100%"
  constexpr std::size_t kBracketsWidth = 3;  // blank and brackets
  const std::size_t width = terminalColumns(STDERR_FILENO) - 1;
  std::string line;
  if (width >= kPercentWidth + kBracketsWidth + kNarrowestTitleAndBar) {
    const std::size_t bar = std::min(kWidestBar, (width - kPercentWidth - kBracketsWidth + 1) / 2);
    line = columnsOf(mTitle, width - kPercentWidth - kBracketsWidth - bar);
    const std::size_t filled = static_cast<std::size_t>(mPercent) * bar / 100;
    line += " [" + std::string(filled, '#') + std::string(bar - filled, '.') + ']';
  }
  const std::string percent = std::to_string(mPercent) + '%';
  line += std::string(kPercentWidth - percent.size(), ' ') + percent;
  static_cast<void>(std::fprintf(stderr, "\r%s\x1b[K", line.c_str()));
  mIsDrawn = true;
}

void ProgressBar::clear() {
  if (mIsDrawn)
    static_cast<void>(std::fputs("\r\x1b[K", stderr));
  mIsDrawn = false;
}

}  // namespace orvane
