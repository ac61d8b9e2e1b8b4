#include "cli/ScalaCommands.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <set>

#include "cli/CliError.h"
#include "cli/Output.h"
#include "cli/ReadingJson.h"
#include "core/RegularFile.h"
#include "core/ScalaFile.h"
#include "core/TuningControls.h"
#include "core/Utf16.h"

namespace orvane {
namespace {

struct Scale {
  std::string name;
  std::string fileName;  // without folder and ending
  std::array<std::string, 12> values;
};

std::string shownFile(const std::string &file) {
  return file.empty() ? "''" : file;
}

std::optional<Scale> readScale(const std::string &file) {
  std::string reason;
  const auto bytes = readRegularFile(file, ScalaFile::kMaximumSize, reason);
  const auto scala = bytes ? ScalaFile::parse(*bytes, reason) : std::nullopt;
  if (!scala) {
    printError(shownFile(file) + ": " + reason);
    return std::nullopt;
  }
  const std::string fileName = validUtf8(std::filesystem::path(file).stem().string());
  return Scale{scala->description.empty() ? fileName : scala->description, fileName,
               scala->listValues()};
}

// In a file of temperaments a name stands once.
void makeNamesDiffer(std::vector<Scale> &scales) {
  std::map<std::string, int> counts;
  for (const Scale &scale : scales)
    ++counts[scale.name];
  std::set<std::string> taken;
  for (Scale &scale : scales) {
    if (counts[scale.name] > 1)
      scale.name += " (" + scale.fileName + ")";
    const std::string name = scale.name;
    for (int number = 2; !taken.insert(scale.name).second; ++number)
      scale.name = name + " " + std::to_string(number);
  }
}

// A string of a property list, with what is not to be shown as it is by its number.
std::u16string quoted(const std::string &text) {
  const auto isHidden = [](char16_t c) {
    return c < u' ' || (c >= 0x7F && c <= 0x9F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
  };
  std::u16string string = u"\"";
  for (const char16_t c : utf16FromUtf8(text).value_or(u"")) {
    if (isHidden(c)) {
      string += u"\\U";
      for (const int shift : {12, 8, 4, 0})
        string += u"0123456789abcdef"[c >> shift & 0xF];
      continue;
    }
    if (c == u'"' || c == u'\\')
      string += u'\\';
    string += c;
  }
  return string + u'"';
}

std::u16string propertyList(const std::vector<Scale> &scales) {
  std::u16string text = u"{\n";
  for (const Scale &scale : scales) {
    text += u"  " + quoted(scale.name) + u" = (";
    for (std::size_t degree = 0; degree < scale.values.size(); ++degree) {
      text += degree == 0 ? u"\n    " : degree == 6 ? u",\n    " : u", ";
      text.append(scale.values[degree].begin(), scale.values[degree].end());
    }
    text += u"\n  );\n";
  }
  return text + u"}\n";
}

std::string littleEndian(std::u16string_view text) {
  std::string bytes = "\xff\xfe";
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

}  // namespace

int importScales(const std::vector<std::string> &files) {
  std::vector<Scale> scales;
  for (const std::string &file : files) {
    if (auto scale = readScale(file))
      scales.push_back(std::move(*scale));
  }
  if (scales.size() < files.size())
    return kExitFailed;
  makeNamesDiffer(scales);
  const std::u16string text = propertyList(scales);
  const std::string bytes = littleEndian(text);
  if (bytes.size() > TemperamentTables::kMaximumFileSize)
    throw CliError(kExitFailed, "--import", "too many for one file of temperaments");
  Output output;
  output.write(Output::isTerminal() ? utf8FromUtf16(text).value_or("") : bytes);
  output.flush();
  return kExitDone;
}

int exportScale(const std::string &name, const CommonOptions &common) {
  const Tuning tuning = resolveTuning(common);
  const std::int64_t found = findTemperament("--export", name, tuning.tables);
  std::string shownName = kEqualTemperament;
  std::array<float, TemperamentTables::kDegreeCount> row;
  if (found == 0) {
    for (std::size_t degree = 0; degree < row.size(); ++degree)
      row[degree] = TemperamentTables::ratioOf(0.0F, degree);
  } else {
    const auto index = static_cast<std::size_t>(found - 1);
    shownName = tuning.tables.name(index);
    std::copy_n(tuning.tables.row(index), row.size(), row.begin());
  }
  std::string reason;
  const auto text = ScalaFile::text(oneLine(shownName), row.data(), reason);
  if (!text)
    throw CliError(kExitFailed, shownName, reason);
  Output output;
  output.write(*text);
  output.flush();
  return kExitDone;
}

}  // namespace orvane
