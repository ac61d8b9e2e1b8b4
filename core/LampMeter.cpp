#include "core/LampMeter.h"

#include "core/WholeNumber.h"

namespace orvane {

std::int32_t wholeCents(float deviation) {
  return wholeNumber(static_cast<double>(deviation) * 100.0);
}

LampRow lampRow(float deviation) {
  LampRow row;
  row.cents = wholeCents(deviation);
  row.natural = row.cents >= -2 && row.cents <= 2 ? CentreLamp::Green : CentreLamp::Blue;
  for (std::size_t k = 0; k < row.flat.size(); ++k) {
    const std::int32_t threshold = 1 + 10 * static_cast<std::int32_t>(k);
    row.flat[k] = row.cents <= -threshold;
    row.sharp[k] = row.cents >= threshold;
  }
  return row;
}

}  // namespace orvane
