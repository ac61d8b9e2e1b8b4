// What the device layer needs of a pop-up menu. The window's pop-up and the terminal's list of
// devices both implement it. Main thread only.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

class PopUpButton {
 public:
  virtual ~PopUpButton() = default;

  virtual void removeAllItems() = 0;
  // index: 0 to numberOfItems().
  virtual void insertItemWithTitle(const std::string &title, std::int64_t index) = 0;
  virtual std::int64_t numberOfItems() const = 0;
  // The first item with that title, or -1.
  virtual std::int64_t indexOfItemWithTitle(const std::string &title) const = 0;
  virtual void selectItemAtIndex(std::int64_t index) = 0;
  // -1 when nothing is selected.
  virtual std::int64_t indexOfSelectedItem() const = 0;
};

}  // namespace orvane
