// The main window as its interface description has it at its original size, in the window's units:
// what the layouts measure without the menu bar.
#pragma once

#include <QSize>

namespace orvane::test {

inline constexpr QSize kFullLayout{448, 488};
inline constexpr QSize kCollapsedLayout{448, 216};
// Of every pop-up button but the input device's.
inline constexpr int kPopUpWidth = 192;

}  // namespace orvane::test
