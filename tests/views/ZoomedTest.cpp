#include "views/Zoomed.h"

#include "tests/views/ZoomRig.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
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
}

}  // namespace
}  // namespace orvane::test
