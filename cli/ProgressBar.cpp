#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace orvane {
namespace {

constexpr int kWidth = 40;
constexpr std::int64_t kLongWork = 10'000'000;  // frames: read in a good part of a second

}  // namespace

ProgressBar::ProgressBar(std::string title, std::int64_t total)
    : mTitle(std::move(title)),
      mTotal(total),
      mShown(total >= kLongWork && ::isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
  if (mShown)
    std::fputs("\r\x1b[K", stderr);
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
  std::fprintf(stderr, "\r%s [%s] %3d%%", mTitle.c_str(), bar.c_str(), percent);
}

}  // namespace orvane
