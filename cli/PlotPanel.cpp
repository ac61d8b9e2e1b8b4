#include "cli/PlotPanel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "cli/Terminal.h"
#include "core/LampMeter.h"
#include "core/NumberText.h"

namespace orvane {
namespace {

constexpr double kLeft = 56.0;
constexpr double kRight = kPanelWidth - 28.0;
constexpr double kTop = 84.0;
constexpr double kBottom = kTop + 300.0;
constexpr double kMostCents = 50.0;
constexpr double kInTuneCents = 2.0;

// To the tenth of a pixel.
std::string place(double pixels) {
  return fixedText(pixels, 1);
}

// What lies beyond the axis is drawn at its end.
double yOf(double cents) {
  const double shown = std::clamp(cents, -kMostCents, kMostCents);
  return kTop + (kMostCents - shown) * (kBottom - kTop) / (2.0 * kMostCents);
}

class TimeAxis {
 public:
  explicit TimeAxis(double duration) : mDuration(std::max(duration, 1e-3)) {}

  double xOf(double seconds) const { return kLeft + seconds / mDuration * (kRight - kLeft); }

  // Seconds from one label to the next.
  double step() const {
    constexpr double kSteps[] = {0.1, 0.2, 0.5, 1,   2,   5,    10,   15,   30,
                                 60,  120, 300, 600, 900, 1800, 3600, 7200, 18000};
    constexpr double kLeastPixels = 70.0;
    const double least = mDuration * kLeastPixels / (kRight - kLeft);
    for (const double step : kSteps) {
      if (step >= least)
        return step;
    }
    return std::ceil(least / 36000.0) * 36000.0;
  }
  double duration() const { return mDuration; }

 private:
  double mDuration;  // seconds
};

// The looks of a mark. As the lamps are: green while the centre lamp is; blue while no more than
// the first side lamp is lit beside it; red beyond. The shape tells the direction besides.
enum Look { InTune, SharpNear, SharpFar, FlatNear, FlatFar, Looks };

Look lookOf(double cents) {
  const LampRow lamps = lampRow(static_cast<float>(cents / 100.0));
  if (lamps.natural == CentreLamp::Green)
    return InTune;
  if (lamps.cents > 0)
    return lamps.sharp[1] ? SharpFar : SharpNear;
  return lamps.flat[1] ? FlatFar : FlatNear;
}

struct Style {
  const char *paint;
  const char *shape;  // from the mark's place
};
constexpr const char *kDot = "m-2.5 0a2.5 2.5 0 1 0 5 0a2.5 2.5 0 1 0-5 0z";
constexpr const char *kUp = "m-3 2h6l-3-5z";
constexpr const char *kDown = "m-3-2h6l-3 5z";
constexpr const char *kTune = "class=\"tune\" fill=\"#15803d\"";
constexpr const char *kNear = "class=\"near\" fill=\"#2563eb\"";
constexpr const char *kFar = "class=\"far\" fill=\"#c2261d\"";
constexpr const char *kRange =
    "class=\"range\" fill=\"none\" stroke=\"#d5dce5\" stroke-width=\"1.2\"";
constexpr const char *kInk = "class=\"ink\" fill=\"#1e293b\"";
constexpr const char *kFaint = "class=\"faint\" fill=\"#5b6675\"";
constexpr std::array<Style, Looks> kStyles = {
    {{kTune, kDot}, {kNear, kUp}, {kFar, kUp}, {kNear, kDown}, {kFar, kDown}}};

void appendPath(std::string &svg, const std::string &attributes, const std::string &data) {
  if (!data.empty())
    svg += "<path " + attributes + " d=\"" + data + "\"/>\n";
}

void appendText(std::string &svg, double x, double y, const std::string &text) {
  svg += "<text x=\"" + place(x) + "\" y=\"" + place(y) + "\">" + text + "</text>\n";
}

std::string centsText(int cents) {
  return cents > 0   ? '+' + std::to_string(cents)
         : cents < 0 ? "−" + std::to_string(-cents)
                     : std::string("0");
}

// "0:07", "75:00", with so many decimals.
std::string minutesText(double seconds, int decimals) {
  const double minutes = std::floor(seconds / 60.0 + 1e-9);
  const std::string rest = fixedText(std::max(0.0, seconds - minutes * 60.0), decimals);
  return fixedText(minutes, 0) + (rest.find('.') == 1 || rest.size() == 1 ? ":0" : ":") + rest;
}

void appendAxes(std::string &svg, const TimeAxis &time) {
  svg += "<rect class=\"band\" fill=\"#bfe8c9\" fill-opacity=\".8\" x=\"" + place(kLeft) +
         "\" y=\"" + place(yOf(kInTuneCents)) + "\" width=\"" + place(kRight - kLeft) +
         "\" height=\"" + place(yOf(-kInTuneCents) - yOf(kInTuneCents)) + "\"/>\n";
  const auto across = [](double cents) {
    return 'M' + place(kLeft) + ' ' + place(yOf(cents)) + 'H' + place(kRight);
  };
  std::string grid;
  std::string labels;
  for (int cents = -50; cents <= 50; cents += 10) {
    if (cents != 0)
      grid += across(cents);
    appendText(labels, kLeft - 10.0, yOf(cents) + 4.0, centsText(cents));
  }
  const double step = time.step();
  const int decimals = step < 1.0 ? 1 : 0;
  std::string times;
  for (int k = 0; k * step <= time.duration(); ++k) {
    const double x = time.xOf(k * step);
    grid += 'M' + place(x) + ' ' + place(kTop) + 'V' + place(kBottom + 6.0);
    appendText(times, x, kBottom + 22.0, minutesText(k * step, decimals));
  }
  appendPath(svg, "class=\"grid\" fill=\"none\" stroke=\"#e2e8f0\"", grid);
  appendPath(svg, "class=\"zero\" fill=\"none\" stroke=\"#64748b\"", across(0.0));
  svg += std::string("<g ") + kFaint + " font-size=\"12\" text-anchor=\"end\">\n" + labels;
  appendText(svg, kLeft - 10.0, kTop - 14.0, "cents");
  svg += std::string("</g>\n<g ") + kFaint + " font-size=\"12\" text-anchor=\"middle\">\n" + times +
         "</g>\n";
}

// As many as fit beside each other. Where several begin in one place, none would tell much.
void appendNotes(std::string &svg, const PitchCurve &curve, const TimeAxis &time) {
  constexpr double kCharacter = 9.0;
  constexpr double kGap = 8.0;
  std::string guides;
  std::string names;
  double free = 0.0;
  for (std::size_t k = 0; k < curve.columns().size(); ++k) {
    if (curve.columns()[k].beginnings != 1)
      continue;
    const std::string &name = curve.nameOf(curve.columns()[k].begins);
    const double left = time.xOf(curve.timeOf(k));
    const double right = left + kCharacter * static_cast<double>(columnCount(name));
    if (left < free || right > kPanelWidth)
      continue;
    free = right + kGap;
    guides += 'M' + place(left) + ' ' + place(kTop - 22.0) + 'V' + place(kBottom);
    appendText(names, left + 4.0, kTop - 10.0, name);
  }
  appendPath(svg, "class=\"guide\" fill=\"none\" stroke=\"#94a3b8\" stroke-dasharray=\"1 3\"",
             guides);
  svg += std::string("<g ") + kInk + " font-size=\"13\" font-weight=\"600\">\n" + names + "</g>\n";
}

// From the lowest to the highest reading of each column; under all else, where they are many.
void appendRanges(std::string &svg, const PitchCurve &curve, const TimeAxis &time) {
  std::string ranges;
  for (std::size_t k = 0; k < curve.columns().size(); ++k) {
    const PitchCurve::Column &column = curve.columns()[k];
    if (column.readings != 0 && column.lowest < column.highest)
      ranges += 'M' + place(time.xOf(curve.timeOf(k))) + ' ' +
                place(yOf(static_cast<double>(column.lowest))) + 'V' +
                place(yOf(static_cast<double>(column.highest)));
  }
  appendPath(svg, kRange, ranges);
}

void appendMarks(std::string &svg, const PitchCurve &curve, const TimeAxis &time) {
  std::array<std::string, Looks> marks;
  std::string line;
  std::int64_t noteBefore = PitchCurve::kNoNote;
  for (std::size_t k = 0; k < curve.columns().size(); ++k) {
    const PitchCurve::Column &column = curve.columns()[k];
    if (column.readings == 0) {
      noteBefore = PitchCurve::kNoNote;
      continue;
    }
    const std::string x = place(time.xOf(curve.timeOf(k)));
    const std::string at = x + ' ' + place(yOf(column.mean()));
    const Look look = lookOf(column.mean());
    marks[look] += 'M' + at + kStyles[look].shape;
    const bool goesOn = column.note != PitchCurve::kNoNote && column.note == noteBefore;
    line += (goesOn ? 'L' : 'M') + at;
    noteBefore = column.note;
  }
  appendPath(svg, "class=\"line\" fill=\"none\" stroke=\"#94a3b8\"", line);
  for (std::size_t look = 0; look < Looks; ++look)
    appendPath(svg, kStyles[look].paint, marks[look]);
}

}  // namespace

std::string plotLegend(const PitchCurve &curve, int right, int baseline) {
  struct Entry {
    Style style;
    const char *text;
    int width;
  };
  std::vector<Entry> entries = {{kStyles[InTune], "in tune", 68},
                                {kStyles[SharpNear], "", 11},
                                {kStyles[FlatNear], "sharp, flat by up to 10 cents", 200},
                                {kStyles[SharpFar], "", 11},
                                {kStyles[FlatFar], "by more", 56}};
  if (!curve.isOfSingleReadings())
    entries.insert(entries.begin(), {{kRange, "m0-6v12"}, "lowest to highest", 128});
  int x = right;
  for (const Entry &entry : entries)
    x -= entry.width;
  std::string svg;
  std::string texts;
  for (const Entry &entry : entries) {
    appendPath(svg, entry.style.paint,
               'M' + place(x) + ' ' + place(baseline - 4.0) + entry.style.shape);
    if (*entry.text != '\0')
      appendText(texts, x + 8.0, baseline, entry.text);
    x += entry.width;
  }
  return svg + "<g " + kFaint + " font-size=\"12\">\n" + texts + "</g>\n";
}

std::string plotPanel(const PitchCurve &curve) {
  const TimeAxis time(curve.duration());
  std::string svg;
  appendRanges(svg, curve, time);
  appendAxes(svg, time);
  appendNotes(svg, curve, time);
  appendMarks(svg, curve, time);
  return svg;
}

}  // namespace orvane
