#include "core/ScalaFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "core/NumberText.h"
#include "core/TemperamentTables.h"
#include "core/Utf16.h"

namespace orvane {
namespace {

constexpr double kOctave = 1200.0;          // cents
constexpr double kOctaveTolerance = 0.001;  // cents: files with cents may be rounded
constexpr int kDecimals = 6;                // of cents, far below what single precision resolves

// The lines that are no comments.
class Lines {
 public:
  explicit Lines(std::string_view text) : mRest(text) {}

  std::optional<std::string_view> next() {
    while (!mRest.empty()) {
      const std::string_view line = mRest.substr(0, mRest.find_first_of("\r\n"));
      mRest.remove_prefix(line.size());
      mRest.remove_prefix(mRest.starts_with("\r\n") ? 2 : std::min<std::size_t>(mRest.size(), 1));
      ++mNumber;
      if (!line.starts_with('!'))
        return line;
    }
    return std::nullopt;
  }
  // Of the line that next gave, from 1; of the last one at the end.
  std::size_t number() const { return std::max<std::size_t>(mNumber, 1); }

 private:
  std::string_view mRest;
  std::size_t mNumber = 0;
};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

void skipBlanks(std::string_view &text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

std::string_view takeDigits(std::string_view &text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

// What follows a number is ignored, but none may be cut in two: "1.2.3", "701,955", "3/2/1", "1e3".
bool goesOn(std::string_view rest) {
  return rest.size() > 1 && std::string_view(".,:/eE").find(rest[0]) != std::string_view::npos &&
         (isDigit(rest[1]) || rest[1] == '-' || rest[1] == '+');
}

// text: digits with a period or none, and a sign before them if any.
double numberOf(std::string_view text) {
  double number = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  // Too small a number can stay 0.
  if (result.ec == std::errc::result_out_of_range &&
      text.substr(0, text.find('.')).find_first_of("123456789") != std::string_view::npos)
    return std::numeric_limits<double>::infinity();
  return number;
}

bool isInRange(double ratio) {
  using Limits = std::numeric_limits<float>;
  return ratio >= static_cast<double>(Limits::min()) && ratio <= static_cast<double>(Limits::max());
}

// For an error: the beginning of what stands in a line, in plain ASCII.
std::string quoted(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  skipBlanks(text);
  std::string shown(text.substr(0, kLongest));
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return "'" + shown + (text.size() > kLongest ? "..." : "") + "'";
}

std::optional<ScalaPitch> parseCents(std::string_view text, bool isNegative) {
  std::string_view rest = text;
  const std::string_view whole = takeDigits(rest);
  rest.remove_prefix(1);
  const std::string_view fraction = takeDigits(rest);
  if ((whole.empty() && fraction.empty()) || goesOn(rest))
    return std::nullopt;
  const double cents = numberOf(text.substr(0, text.size() - rest.size()));
  const double signedCents = isNegative ? -cents : cents;
  return ScalaPitch{signedCents, std::exp2(signedCents / kOctave), false};
}

std::optional<ScalaPitch> parseRatio(std::string_view text) {
  const std::string_view numerator = takeDigits(text);
  std::string_view denominator = "1";
  std::string_view rest = text;
  skipBlanks(rest);
  if (rest.starts_with('/')) {
    rest.remove_prefix(1);
    skipBlanks(rest);
    denominator = takeDigits(rest);
    text = rest;
  }
  if (numerator.empty() || denominator.empty() || goesOn(text))
    return std::nullopt;
  const double ratio = numberOf(numerator) / numberOf(denominator);
  return ScalaPitch{kOctave * std::log2(ratio), ratio, true};
}

std::optional<ScalaPitch> parsePitch(std::string_view line, std::string &reason) {
  std::string_view text = line;
  skipBlanks(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative)
    text.remove_prefix(1);
  std::string_view rest = text;
  takeDigits(rest);
  const auto pitch = rest.starts_with('.') ? parseCents(text, isNegative) : parseRatio(text);
  if (!pitch)
    reason = quoted(line) + " is no pitch, as 3/2 or 701.955";
  else if (pitch->isRatio && isNegative)
    reason = quoted(line) + " is a negative ratio";
  else if (!isInRange(pitch->ratio))
    reason = quoted(line) + " is out of range";
  else
    return pitch;
  return std::nullopt;
}

std::string plainText(std::string_view line) {
  std::u16string text = utf16FromUtf8(line).value_or(u"");
  if (text.empty()) {
    for (const char c : line)
      text += static_cast<unsigned char>(c);
  }
  // The mark of a text that was joined to another stands for nothing either.
  const auto isHidden = [](char16_t c) {
    return c < u' ' || (c >= 0x7F && c <= 0x9F) || c == 0xFEFF;
  };
  std::replace_if(text.begin(), text.end(), isHidden, u' ');
  const std::size_t start = std::min(text.find_first_not_of(u' '), text.size());
  return utf8FromUtf16(text.substr(start, text.find_last_not_of(u' ') + 1 - start)).value_or("");
}

// How many cents a degree lies from equal temperament, as a temperament file has it.
std::string offsetText(double cents, std::size_t degree) {
  std::string text = fixedText(cents - 100.0 * static_cast<double>(degree), kDecimals);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.'))
    text.pop_back();
  if (text == "-0")
    return "0";
  return text;
}

std::string ratioText(double ratio) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), ratio,
                                 std::chars_format::general, 10);
  return {digits.data(), end.ptr};
}

std::string centsText(float ratio, std::size_t degree) {
  const double cents = kOctave * std::log2(static_cast<double>(ratio));
  for (int decimals = 1; decimals < kDecimals; ++decimals) {
    const std::string text = fixedText(cents, decimals);
    const std::string offset = offsetText(numberOf(text), degree);
    if (TemperamentTables::ratioOf(floatValue(offset), degree) == ratio)
      return text;
  }
  return fixedText(cents, kDecimals);
}

}  // namespace

std::optional<ScalaFile> ScalaFile::parse(std::string_view bytes, std::string &reason) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  Lines lines(bytes.starts_with(kMark) ? bytes.substr(kMark.size()) : bytes);
  const auto fail = [&](const std::string &what) {
    reason = "line " + std::to_string(lines.number()) + ": " + what;
    return std::nullopt;
  };

  ScalaFile file;
  const auto description = lines.next();
  if (!description)
    return fail("the file ends before its description");
  file.description = plainText(*description);

  const auto count = lines.next();
  if (!count)
    return fail("the file ends before its number of notes");
  std::string_view rest = *count;
  skipBlanks(rest);
  const std::string_view digits = takeDigits(rest);
  if (digits.empty() || goesOn(rest))
    return fail(quoted(*count) + " is no number of notes");
  if (numberOf(digits) != static_cast<double>(file.pitches.size()))
    return fail(std::string(digits.substr(0, 40)) + " notes, but a temperament has 12");

  std::size_t degree = 0;
  for (ScalaPitch &pitch : file.pitches) {
    ++degree;
    const auto line = lines.next();
    if (!line)
      return fail("the file ends before pitch " + std::to_string(degree) + " of 12");
    std::string what;
    const auto parsed = parsePitch(*line, what);
    if (!parsed)
      return fail(what);
    pitch = *parsed;
    if (degree == file.pitches.size() && std::abs(pitch.cents - kOctave) > kOctaveTolerance)
      return fail("the last pitch, " + quoted(*line) + ", is not the octave 2/1");
  }
  return file;
}

std::array<std::string, 12> ScalaFile::listValues() const {
  const bool areRatios = std::all_of(pitches.begin(), pitches.end() - 1,
                                     [](const ScalaPitch &pitch) { return pitch.isRatio; });
  std::array<std::string, 12> values;
  values[0] = areRatios ? "1" : "0";
  for (std::size_t degree = 1; degree < values.size(); ++degree) {
    const ScalaPitch &pitch = pitches[degree - 1];
    values[degree] = areRatios ? ratioText(pitch.ratio) : offsetText(pitch.cents, degree);
  }
  return values;
}

std::optional<std::string> ScalaFile::text(const std::string &name, const float *row,
                                           std::string &reason) {
  std::string text = name.starts_with('!') ? " " + name : name;
  text += "\n 12\n!\n";
  for (std::size_t degree = 1; degree < TemperamentTables::kDegreeCount; ++degree) {
    if (!isInRange(static_cast<double>(row[degree]))) {
      reason = "degree " + std::to_string(degree) + " is no pitch";
      return std::nullopt;
    }
    text += " " + centsText(row[degree], degree) + "\n";
  }
  return text + " 2/1\n";
}

}  // namespace orvane
