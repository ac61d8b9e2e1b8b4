#include "cli/ReadingText.h"

#include "cli/Terminal.h"
#include "core/NumberText.h"
#include "core/SignedText.h"

namespace orvane {
namespace {

constexpr const char *kGray = "\x1b[90m";
constexpr const char *kRed = "\x1b[31m";
constexpr const char *kGreen = "\x1b[32m";
constexpr const char *kBlue = "\x1b[34m";
constexpr const char *kYellow = "\x1b[33m";
constexpr const char *kPlain = "\x1b[0m";

void appendLamp(std::string &line, const char *colour, const char *lamp, bool coloured) {
  if (coloured)
    line += colour;
  line += lamp;
  if (coloured)
    line += kPlain;
}

void appendSideLamp(std::string &line, bool lit, bool coloured) {
  appendLamp(line, lit ? kRed : kGray, lit ? "●" : "○", coloured);
}

void appendCentreLamp(std::string &line, CentreLamp lamp, bool coloured) {
  switch (lamp) {
    case CentreLamp::Gray:
      return appendLamp(line, kGray, "◇", coloured);
    case CentreLamp::Green:
      return appendLamp(line, kGreen, "◆", coloured);
    case CentreLamp::Blue:
      return appendLamp(line, kBlue, "◈", coloured);
  }
}

void appendSegment(std::string &line, LevelSegment segment, bool coloured) {
  switch (segment) {
    case LevelSegment::Gray:
      return appendLamp(line, kGray, "▯", coloured);
    case LevelSegment::Green:
      return appendLamp(line, kGreen, "▮", coloured);
    case LevelSegment::Yellow:
      return appendLamp(line, kYellow, "▪", coloured);
    case LevelSegment::Red:
      return appendLamp(line, kRed, "■", coloured);
  }
}

std::string frequencies(const Display &display) {
  return padded(hertzString(display.frequency), 8, Align::Right) + ", ideal " +
         padded(hertzString(display.idealFrequency), 8, Align::Right) + ", " +
         plusMinusFloatString(display.difference);
}

std::string noteAndCents(const Display &display) {
  return padded(noteText(display.texts), 4, Align::Left) +
         padded(plusMinusValueString(display.lamps.cents), 4, Align::Right) + " cents";
}

}  // namespace

std::string noteText(const NoteTexts &texts) {
  return texts.mNoteText + std::string(shownAccidental(texts)) + texts.mOctaveText;
}

std::string timeText(double seconds) {
  return padded(fixedText(seconds, 3), 8, Align::Right) + " s";
}

std::string changeLine(const Display &display) {
  return noteAndCents(display) + "  " + frequencies(display);
}

std::string liveLine(const Display &display, bool coloured, std::size_t columns) {
  // A line as wide as the terminal would wrap on some.
  constexpr std::size_t kColumnsWithLamps = 28;
  constexpr std::size_t kColumnsWithLevel = 44;
  constexpr std::size_t kColumnsWithAll = 79;

  if (columns <= kColumnsWithLamps)
    return columnsOf(noteAndCents(display), columns - 1);
  std::string line = noteAndCents(display) + "  ";
  const LampRow &lamps = display.lamps;
  for (std::size_t k = lamps.flat.size(); k-- > 0;)
    appendSideLamp(line, lamps.flat[k], coloured);
  appendCentreLamp(line, display.centre, coloured);
  for (const bool lit : lamps.sharp)
    appendSideLamp(line, lit, coloured);
  if (columns > kColumnsWithAll)
    line += "  " + padded(frequencies(display), 33, Align::Left);
  if (columns > kColumnsWithLevel) {
    line += "  ";
    for (const LevelSegment segment : display.segments)
      appendSegment(line, segment, coloured);
    line += padded(display.levelText, 6, Align::Right);
  }
  return line;
}

}  // namespace orvane
