#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <unistd.h>

#include "cli/CliError.h"
#include "cli/Output.h"

namespace orvane {
namespace {

constexpr int kWidth = 30;
constexpr std::size_t kWidestTitle = 38;        // leaves the whole within 80 columns
constexpr std::int64_t kLongWork = 10'000'000;  // frames: read in a good part of a second

}  // namespace

ProgressBar::ProgressBar(std::string title, std::int64_t total)
    : mTitle(oneLine(std::move(title))),
      mTotal(total),
      mShown(total >= kLongWork && ::isatty(STDERR_FILENO) == 1 && !Output::isTerminal()) {
  // A line that wraps could not be rewritten. Cut at the end of a character.
  if (mTitle.size() > kWidestTitle) {
    std::size_t end = kWidestTitle;
    while (end > 0 && (static_cast<unsigned char>(mTitle[end]) & 0xC0U) == 0x80U)
      --end;
    mTitle = mTitle.substr(0, end) + "…";
  }
}

ProgressBar::~ProgressBar() {
  if (mShown)
    static_cast<void>(std::fputs("\r\x1b[K", stderr));
}

void ProgressBar::advanceTo(std::int64_t done) {
  if (!mShown)
    return;
  const int percent = static_cast<int>(std::clamp<std::int64_t>(done / (mTotal / 100), 0, 100));
  if (percent == mPercent)
    return;
  mPercent = percent;
  const auto filled = static_cast<std::size_t>(percent * kWidth / 100);
  const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
  static_cast<void>(std::fprintf(stderr, "\r%s [%s] %3d%%", mTitle.c_str(), bar.c_str(), percent));
}

}  // namespace orvane
