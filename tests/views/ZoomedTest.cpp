#include "views/Zoomed.h"

#include <algorithm>
#include <cmath>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/DisclosureButton.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

template <class Control>
bool showsTheFocus() {
  ZoomRig<Control> rig(QRect(20, 40, 120, 26));
  if constexpr (requires { rig->setEditable(true); })
    rig->setEditable(true);
  rig->clearFocus();
  const QImage without = rig->grab().toImage();
  rig->setFocus(Qt::MouseFocusReason);
  return rig->hasFocus() && rig->grab().toImage() != without;
}

TEST(Zoomed, ShowsTheFocusHoweverItWasGiven) {
  EXPECT_TRUE(showsTheFocus<AutoResizeTextField>());
  EXPECT_TRUE(showsTheFocus<AutoResizeStepper>());
  EXPECT_TRUE(showsTheFocus<AutoResizePopUpButton>());
  EXPECT_TRUE(showsTheFocus<AutoResizeSlider>());
  EXPECT_TRUE(showsTheFocus<HiddenButton>());
  EXPECT_TRUE(showsTheFocus<DisclosureButton>());
}

TEST(Zoomed, DrawsTheRingOfTheDisclosureButtonAsFarOutAndAsThickAsTheZoomIs) {
  ZoomRig<DisclosureButton> rig(QRect(20, 40, 24, 24));
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    rig.zoomTo(zoom);
    rig->clearFocus();
    const QImage without = rig->grab().toImage();
    rig->setFocus();
    const QImage with = rig->grab().toImage();
    ASSERT_EQ(with.size(), QSize(24, 24) * zoom);
    // Radius 8, from 7 to 9; half a pixel's diagonal more for its edges.
    double innermost = 24.0 * zoom;
    double outermost = 0.0;
    int changed = 0;
    for (int y = 0; y < with.height(); ++y)
      for (int x = 0; x < with.width(); ++x) {
        if (with.pixel(x, y) == without.pixel(x, y))
          continue;
        const double radius = std::hypot(x + 0.5 - 12.0 * zoom, y + 0.5 - 12.0 * zoom);
        innermost = std::min(innermost, radius);
        outermost = std::max(outermost, radius);
        ++changed;
      }
    EXPECT_NEAR(innermost, 7.0 * zoom, 0.8);
    EXPECT_NEAR(outermost, 9.0 * zoom, 0.8);
    // The ring's area is pi times 81 - 49; the pixels at its edges count in full.
    EXPECT_GT(changed, 100.5 * zoom * zoom);
  }
}

}  // namespace
}  // namespace orvane::test
