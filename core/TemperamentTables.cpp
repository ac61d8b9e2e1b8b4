#include "core/TemperamentTables.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "core/NumberText.h"
#include "core/RegularFile.h"
#include "core/Utf16.h"

namespace orvane {
namespace {

constexpr std::size_t kDegrees = TemperamentTables::kDegreeCount;
constexpr std::size_t kReferenceDegree = 9;

constexpr std::u16string_view kBuiltInTable =
    u"{Pythagorean = (1.0, 1.067871094, 1.125, 1.185185185, 1.265625, 1.333333333, 1.423828125, "
    u"1.5, 1.601806641, 1.6875, 1.777777778, 1.8984375);}";

float entryValue(const PropertyListValue &entry) {
  const std::string *text = entry.string();
  return text != nullptr ? floatValue(*text) : 0.0F;
}

// list: at least 12 entries. row: 12 floats.
void writeRow(const PropertyListValue::List &list, float *row) {
  row[0] = 1.0F;
  const float first = entryValue(list[0]);
  // First entry 0: cents from equal temperament. Otherwise: ratios on any common scale.
  if (first == 0.0F) {
    for (std::size_t j = 1; j < kDegrees; ++j)
      row[j] = TemperamentTables::ratioOf(entryValue(list[j]), j);
  } else {
    for (std::size_t j = 1; j < kDegrees; ++j)
      row[j] = entryValue(list[j]) / first;
  }
}

std::string centsText(double cents) {
  // The sign of not-a-number differs between processors.
  return std::isnan(cents) ? "nan" : fixedText(cents, 3);
}

std::string toolTipOf(const float *row) {
  std::array<float, kDegrees> equal;
  for (std::size_t j = 0; j < kDegrees; ++j)
    equal[j] = static_cast<float>(std::exp2(static_cast<double>(j) / 12.0));
  const auto octaves = [&](std::size_t j) {
    const float quotient = row[j] / equal[j];
    return std::log2(static_cast<double>(quotient));
  };

  const double reference = octaves(kReferenceDegree);
  std::string text = "cents = (";
  for (std::size_t j = 0; j < kDegrees; ++j) {
    if (j > 0)
      text += ", ";
    // Degree 9 is 0 by definition, also where its logarithm is infinite.
    text += centsText(j == kReferenceDegree ? 0.0 : 1200.0 * octaves(j) - 1200.0 * reference);
  }
  return text + ")";
}

struct NamedList {
  const std::string *name;
  std::u16string utf16;
  const PropertyListValue::List *list;
};

bool comesBefore(const NamedList &a, const NamedList &b) {
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t order =
      u_strCaseCompare(a.utf16.data(), static_cast<std::int32_t>(a.utf16.size()), b.utf16.data(),
                       static_cast<std::int32_t>(b.utf16.size()),
                       U_FOLD_CASE_DEFAULT | U_COMPARE_CODE_POINT_ORDER, &status);
  return order < 0;
}

void tell(const TemperamentTables::Log &log, const std::string &line) {
  if (log)
    log(line);
}

// A path may hold any byte; control characters would break the log line.
std::string printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }, '?');
  return text;
}

PropertyListDictionary builtInTemperaments() {
  PropertyListError error;
  auto root = PropertyList::parse(kBuiltInTable, error);
  return std::get<PropertyListDictionary>(std::move(root.value().content));
}

std::optional<PropertyListDictionary> parseTemperaments(std::u16string_view text,
                                                        std::string &reason) {
  PropertyListError error;
  auto root = PropertyList::parse(text, error);
  if (!root) {
    reason = error.description();
    return std::nullopt;
  }
  auto *dictionary = std::get_if<PropertyListDictionary>(&root->content);
  if (dictionary == nullptr) {
    reason = PropertyList::errorAt(text, root->offset, "the root is no dictionary").description();
    return std::nullopt;
  }
  for (const PropertyListEntry &entry : dictionary->entries) {
    if (entry.value.list() == nullptr) {
      reason = PropertyList::errorAt(text, entry.value.offset,
                                     "a temperament's value is no list, as \"(0, 0, ...)\"")
                   .description();
      return std::nullopt;
    }
  }
  return std::move(*dictionary);
}

}  // namespace

float TemperamentTables::ratioOf(float cents, std::size_t degree) {
  const float sum = cents + static_cast<float>(degree) * 100.0F;
  return static_cast<float>(std::exp2(static_cast<double>(sum) / 1200.0));
}

void TemperamentTables::load(const std::filesystem::path &file, const Log &log) {
  std::string reason;
  const auto bytes = readRegularFile(file, kMaximumFileSize, reason);
  const auto text = bytes ? decodeUtf16(*bytes, reason) : std::nullopt;
  auto temperaments = text ? parseTemperaments(*text, reason) : std::nullopt;
  // In UTF-16 a property list always has zero bytes. Editors save UTF-8 unless told otherwise, and
  // read as UTF-16 it yields the strangest errors.
  if (!temperaments && bytes && !bytes->empty() && bytes->find('\0') == std::string::npos)
    reason += " (the file must be UTF-16, not UTF-8)";
  build(std::move(temperaments), file.string() + ": " + reason, log);
}

void TemperamentTables::loadText(std::u16string_view text, const std::string &source,
                                 const Log &log) {
  std::string reason;
  auto temperaments = parseTemperaments(text, reason);
  build(std::move(temperaments), source + ": " + reason, log);
}

void TemperamentTables::build(std::optional<PropertyListDictionary> temperaments,
                              const std::string &error, const Log &log) {
  if (!temperaments)
    tell(log, "failed to read Temperaments.txt. error: " + printable(error));
  mTemperaments = temperaments ? std::move(*temperaments) : builtInTemperaments();
  mTemperamentCount = static_cast<std::int64_t>(mTemperaments.entries.size());
  mNames.clear();
  mToolTips.clear();

  std::vector<NamedList> sorted;
  sorted.reserve(mTemperaments.entries.size());
  for (const PropertyListEntry &entry : mTemperaments.entries)
    sorted.push_back({&entry.key, utf16FromUtf8(entry.key).value_or(u""), entry.value.list()});
  std::stable_sort(sorted.begin(), sorted.end(), comesBefore);

  mTemperamentTables = std::make_unique<float[]>(sorted.size() * kDegreeCount);
  float *row = mTemperamentTables.get();
  for (const NamedList &temperament : sorted) {
    if (temperament.list->size() < kDegreeCount) {
      tell(log, "*** Invalid Temperament Pitch Table. ***");
      --mTemperamentCount;
      continue;
    }
    mNames.push_back(*temperament.name);
    writeRow(*temperament.list, row);
    mToolTips.push_back(toolTipOf(row));
    row += kDegreeCount;
  }
}

}  // namespace orvane
