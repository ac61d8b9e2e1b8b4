// A device menu that keeps its items and writes down what is done to it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "audio/PopUpButton.h"

namespace orvane {

class FakePopUpButton : public PopUpButton {
 public:
  std::vector<std::string> items;
  std::vector<std::string> actions;
  std::int64_t selected = -1;

  void removeAllItems() override {
    actions.push_back("remove all");
    items.clear();
    selected = -1;
  }
  void insertItemWithTitle(const std::string &title, std::int64_t index) override {
    actions.push_back("insert " + title + " at " + std::to_string(index));
    items.insert(items.begin() + index, title);
  }
  std::int64_t numberOfItems() const override { return static_cast<std::int64_t>(items.size()); }
  std::int64_t indexOfItemWithTitle(const std::string &title) const override {
    const auto found = std::find(items.begin(), items.end(), title);
    return found == items.end() ? -1 : found - items.begin();
  }
  void selectItemAtIndex(std::int64_t index) override {
    actions.push_back("select " + std::to_string(index));
    selected = index;
  }
  std::int64_t indexOfSelectedItem() const override { return selected; }
};

}  // namespace orvane
