#include "cli/DeviceMenu.h"

#include <algorithm>

namespace orvane {

void DeviceMenu::removeAllItems() {
  mTitles.clear();
  mSelected = -1;
}

void DeviceMenu::insertItemWithTitle(const std::string &title, std::int64_t index) {
  mTitles.insert(mTitles.begin() + std::clamp<std::int64_t>(index, 0, numberOfItems()), title);
}

std::int64_t DeviceMenu::numberOfItems() const {
  return static_cast<std::int64_t>(mTitles.size());
}

std::int64_t DeviceMenu::indexOfItemWithTitle(const std::string &title) const {
  const auto found = std::find(mTitles.begin(), mTitles.end(), title);
  return found == mTitles.end() ? -1 : found - mTitles.begin();
}

void DeviceMenu::selectItemAtIndex(std::int64_t index) {
  mSelected = index >= 0 && index < numberOfItems() ? index : -1;
}

std::int64_t DeviceMenu::indexOfSelectedItem() const {
  return mSelected;
}

}  // namespace orvane
