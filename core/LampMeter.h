// The pattern of the lamp row: a bar of side lamps that grows from the centre in steps of ten
// cents, and the colour of the centre lamp. Plain arithmetic, any thread.
#pragma once

#include <array>
#include <cstdint>

namespace orvane {

enum class CentreLamp { Gray, Green, Blue };  // no pitch, in tune, out of tune

struct LampRow {
  std::int32_t cents;         // the deviation in whole cents, cut toward zero
  CentreLamp natural;         // Green from −2 to 2 cents, else Blue
  std::array<bool, 5> flat;   // lit, from the centre outwards
  std::array<bool, 5> sharp;  // lit, from the centre outwards
};

// Whole cents of a deviation in semitones, cut toward zero: 0.999 cents is 0. A deviation that has
// no such integer (not a number, infinite) gives the smallest one.
std::int32_t wholeCents(float deviation);

LampRow lampRow(float deviation);

}  // namespace orvane
