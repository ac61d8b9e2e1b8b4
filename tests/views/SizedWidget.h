// A content that remembers what it was laid out for.
#pragma once

#include <utility>
#include <vector>

#include <QResizeEvent>
#include <QWidget>

namespace orvane::test {

class SizedWidget : public QWidget {
 public:
  std::vector<QSize> takeSizes() { return std::exchange(mSizes, {}); }

 protected:
  void resizeEvent(QResizeEvent *event) override { mSizes.push_back(event->size()); }

 private:
  std::vector<QSize> mSizes;
};

}  // namespace orvane::test
