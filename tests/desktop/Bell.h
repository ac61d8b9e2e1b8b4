// Counts how often a desktop's bell is rung, by any program. Main thread only.
#pragma once

#include "tests/desktop/Desktop.h"

namespace orvane::test {

class Bell {
 public:
  // Counts from now on.
  explicit Bell(const Desktop &desktop);

  int count();

 private:
  XConnection mConnection;
  int mFirstEvent = 0;  // of the keyboard extension
  int mCount = 0;
};

}  // namespace orvane::test
