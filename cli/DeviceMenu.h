// The device menu of the terminal: the titles that the window's pop-up would show. Main thread.
#pragma once

#include <vector>

#include "audio/PopUpButton.h"

namespace orvane {

class DeviceMenu : public PopUpButton {
 public:
  void removeAllItems() override;
  void insertItemWithTitle(const std::string &title, std::int64_t index) override;
  std::int64_t numberOfItems() const override;
  std::int64_t indexOfItemWithTitle(const std::string &title) const override;
  void selectItemAtIndex(std::int64_t index) override;
  std::int64_t indexOfSelectedItem() const override;

 private:
  std::vector<std::string> mTitles;
  std::int64_t mSelected = -1;
};

}  // namespace orvane
