#include "core/LampMeter.h"

#include <limits>

namespace orvane {

std::int32_t wholeCents(float deviation) {
  const double cents = static_cast<double>(deviation) * 100.0;
  if (!(cents > -2147483649.0 && cents < 2147483648.0))
    return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(cents);
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
