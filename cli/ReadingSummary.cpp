#include "cli/ReadingSummary.h"

#include <cmath>

#include "cli/ReadingFields.h"
#include "cli/ReadingJson.h"
#include "cli/ReadingText.h"
#include "cli/Terminal.h"
#include "core/NumberText.h"

namespace orvane {
namespace {

// "+7", "±0", "-12.5", with so many decimals.
std::string signedText(double value, int decimals) {
  const std::string text = fixedText(std::abs(value), decimals);
  const bool isZero = text.find_first_not_of("0.") == std::string::npos;
  return (isZero ? "±" : value < 0.0 ? "-" : "+") + text;
}

std::string number(double value) {
  std::string text;
  return appendNumber(text, value) ? text : "null";
}

}  // namespace

void ReadingSummary::add(const Reading &reading) {
  if (!reading.isShown())
    return;
  const Display &display = reading.display;
  Note &note = mNotes[display.noteNumber];
  if (note.cents.empty())
    note.texts = display.texts;
  ++note.cents[display.lamps.cents];

  ++mReadings;
  const auto count = static_cast<double>(mReadings);
  const double cents = display.lamps.cents;
  const double beforeTime = reading.time - mMeanTime;
  mMeanTime += beforeTime / count;
  mMeanCents += (cents - mMeanCents) / count;
  mTimeSquares += beforeTime * (reading.time - mMeanTime);
  mTimeTimesCents += beforeTime * (cents - mMeanCents);
}

std::optional<double> ReadingSummary::drift() const {
  if (mReadings < 2 || !(mTimeSquares > 0.0))
    return std::nullopt;
  return mTimeTimesCents / mTimeSquares * 60.0;
}

ReadingSummary::Spread ReadingSummary::spread(const Histogram &cents) {
  std::uint64_t readings = 0;
  for (const auto &[value, count] : cents)
    readings += count;
  // The reading of that place in their order, from 0.
  const auto at = [&cents](std::uint64_t place) {
    auto entry = cents.begin();
    for (; place >= entry->second; ++entry)
      place -= entry->second;
    return static_cast<double>(entry->first);
  };
  const auto quantile = [&at, readings](std::uint64_t quarters) {
    const std::uint64_t fourfold = (readings - 1) * quarters;
    const double below = at(fourfold / 4);
    const auto part = static_cast<double>(fourfold % 4) / 4.0;
    return part == 0.0 ? below : below + part * (at(fourfold / 4 + 1) - below);
  };
  return {readings, quantile(2), quantile(3) - quantile(1)};
}

std::string ReadingSummary::text() const {
  std::string text = mNotes.empty() ? "Summary: no note was heard\n" : "Summary:\n";
  for (const auto &[noteNumber, note] : mNotes) {
    const Spread spread = this->spread(note.cents);
    text += "  " + padded(noteText(note.texts), 4, Align::Left) +
            padded(std::to_string(spread.readings), 9, Align::Right) +
            (spread.readings == 1 ? " reading,  median" : " readings, median") +
            padded(signedText(spread.median, 1), 6, Align::Right) + " cents, quartiles" +
            padded(number(spread.interquartileRange), 6, Align::Right) + " cents apart\n";
  }
  if (const auto drift = this->drift())
    text += "  drift " + signedText(*drift, 2) + " cents per minute\n";
  return text;
}

std::string ReadingSummary::json(std::string_view file) const {
  std::string line = "{";
  if (!file.empty())
    line += "\"file\":" + jsonString(file) + ',';
  line += "\"summary\":{\"notes\":[";
  bool isFirst = true;
  for (const auto &[noteNumber, note] : mNotes) {
    const Spread spread = this->spread(note.cents);
    line += isFirst ? "{\"note\":\"" : ",{\"note\":\"";
    line.append(note.texts.mNoteText).append("\",\"accidental\":\"");
    line.append(shownAccidental(note.texts)).append("\",\"octave\":\"");
    line.append(note.texts.mOctaveText).append("\",\"readings\":");
    line += std::to_string(spread.readings) + ",\"median\":" + number(spread.median) +
            ",\"interquartileRange\":" + number(spread.interquartileRange) + '}';
    isFirst = false;
  }
  const auto drift = this->drift();
  line += "],\"drift\":" + (drift ? number(*drift) : "null") + "}}\n";
  return line;
}

}  // namespace orvane
