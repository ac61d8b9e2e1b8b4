#include "views/Zoomed.h"

#include <cstdint>
#include <cstdlib>
#include <functional>

#include <QLabel>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizeBox.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

QFont font13() {
  QFont font = QApplication::font();
  font.setPixelSize(13);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

// What a control looks like at k = 1, after a relayout that changes nothing, and what the toolkit's
// own does at the same place.
template <class Control, class Plain>
void expectSameLook(const std::function<void(Control &)> &setUp,
                    const std::function<void(Plain &)> &setUpPlain) {
  ZoomRig<Control> rig(QSize(120, 26));
  setUp(*rig.control);
  rig.zoom(2.0);
  rig.zoom(1.0);
  ASSERT_EQ(rig.control->geometry(), QRect(20, 8, 120, 26));
  ZoomRig<Plain> plain(QSize(120, 26));
  plain.control->setFont(font13());
  setUpPlain(*plain.control);
  EXPECT_EQ(rig.drawn(), plain.drawn());
}

TEST(Zoomed, LooksLikeTheToolkitsControlWhileItIsNotZoomed) {
  expectSameLook<AutoResizeTextField, QLineEdit>(
      [](auto &field) {
        field.setEditable(true);
        field.setFontPixelSize(13);
        field.setText(QStringLiteral("440.37"));
      },
      [](auto &field) { field.setText(QStringLiteral("440.37")); });
  expectSameLook<AutoResizeTextField, QLabel>(
      [](auto &label) {
        label.setFontPixelSize(13);
        label.setText(QStringLiteral("Tonic:"));
      },
      [](auto &label) { label.setText(QStringLiteral("Tonic:")); });
  expectSameLook<AutoResizeSlider, QSlider>([](auto &slider) { slider.setIntValue(37); },
                                            [](auto &slider) {
                                              slider.setOrientation(Qt::Horizontal);
                                              slider.setValue(37);
                                            });
  expectSameLook<AutoResizePopUpButton, QComboBox>(
      [](auto &button) {
        button.setFontPixelSize(13);
        button.addItemWithTitle(QStringLiteral("Equal temperament"));
      },
      [](auto &button) { button.addItem(QStringLiteral("Equal temperament")); });
  expectSameLook<HiddenButton, QPushButton>(
      [](auto &button) {
        button.setFontPixelSize(13);
        button.setText(QStringLiteral("Settings"));
      },
      [](auto &button) { button.setText(QStringLiteral("Settings")); });
  const auto line = [](QFrame &box) { box.setFrameStyle(QFrame::HLine | QFrame::Sunken); };
  expectSameLook<AutoResizeBox, QFrame>(line, line);
}

// The mean difference of a colour channel, of 255.
double meanDifference(const QImage &one, const QImage &other) {
  std::int64_t sum = 0;
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      const QRgb a = one.pixel(x, y);
      const QRgb b = other.pixel(x, y);
      sum += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
             std::abs(qBlue(a) - qBlue(b));
    }
  }
  return static_cast<double>(sum) / (3.0 * one.width() * one.height());
}

// Scaled down again, a control looks as it did before, but for its edges, which are finer at twice
// the size, and for the line of a text, which is put on whole pixels and so up to half a unit away
// from where it was. That makes 0.63 of the difference that a whole unit makes, for a label; so the
// bound lets nothing pass that is a whole unit away or does not zoom with the rest.
template <class Control>
void expectZoomedLook(const std::function<void(Control &)> &setUp) {
  ZoomRig<Control> rig(QSize(120, 26));
  setUp(*rig.control);
  const QImage before = rig.drawn();
  rig.zoom(2.0);
  const QImage twice =
      rig.drawn().scaled(QSize(120, 26), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  const double difference = meanDifference(before, twice);
  QImage away(before.size(), before.format());
  away.fill(before.pixelColor(0, 0));
  QPainter(&away).drawImage(0, 1, before);
  EXPECT_LT(difference, 0.7 * meanDifference(before, away))
      << Control::staticMetaObject.className();
}

TEST(Zoomed, LooksTheSameZoomedAsBefore) {
  expectZoomedLook<AutoResizeTextField>([](auto &field) {
    field.setEditable(true);
    field.setFontPixelSize(13);
    field.setText(QStringLiteral("440.37"));
  });
  expectZoomedLook<AutoResizeTextField>([](auto &label) {
    label.setFontPixelSize(13);
    label.setText(QStringLiteral("Temperament:"));
  });
  expectZoomedLook<AutoResizeSlider>([](auto &slider) { slider.setIntValue(37); });
  expectZoomedLook<AutoResizeStepper>([](auto &stepper) { stepper.setFloatValue(50.0F); });
  expectZoomedLook<AutoResizePopUpButton>([](auto &button) {
    button.setFontPixelSize(13);
    button.addItemWithTitle(QStringLiteral("Equal temperament"));
  });
  expectZoomedLook<HiddenButton>([](auto &button) {
    button.setFontPixelSize(13);
    button.setText(QStringLiteral("Settings"));
  });
}

TEST(Zoomed, IsOperatedWhereItIsDrawn) {
  for (const double zoom : kZooms) {
    ZoomRig<HiddenButton> rig(QSize(120, 26));
    rig.zoom(zoom);
    rig.click(119.0, 25.0);
    EXPECT_EQ(rig.actions, 1) << zoom;
    rig.click(121.0, 13.0);
    EXPECT_EQ(rig.actions, 1) << zoom;
  }
}

TEST(Zoomed, KeepsItsOwnFontAtEveryZoom) {
  ZoomRig<AutoResizeTextField> rig(QSize(120, 26));
  rig.control->setFontPixelSize(13);
  rig.zoom(3.0);
  EXPECT_EQ(rig.control->font().pixelSize(), 13);
  EXPECT_EQ(rig.control->fontPixelSize(), 13);
}

TEST(Zoomed, ShowsTheFocusHoweverItWasGiven) {
  ZoomRig<AutoResizeSlider> slider(QSize(120, 26));
  ZoomRig<AutoResizePopUpButton> popUp(QSize(120, 26));
  ZoomRig<HiddenButton> button(QSize(120, 26));
  ZoomRig<AutoResizeTextField> field(QSize(120, 26));
  field.control->setEditable(true);
  const auto showsFocus = [](auto &rig) {
    rig.view.activateWindow();
    rig.settle();
    rig.control->clearFocus();
    const QImage without = rig.drawn();
    rig.control->setFocus(Qt::MouseFocusReason);
    return rig.control->hasFocus() && rig.drawn() != without;
  };
  EXPECT_TRUE(showsFocus(slider));
  EXPECT_TRUE(showsFocus(popUp));
  EXPECT_TRUE(showsFocus(button));
  EXPECT_TRUE(showsFocus(field));
}

}  // namespace
}  // namespace orvane::test
