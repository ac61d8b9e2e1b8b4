// What the proportional controls look like: at the original size like the toolkit's own, at the
// other sizes the same drawing, zoomed.
#include <cmath>
#include <functional>
#include <memory>
#include <ostream>

#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QSlider>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizeBox.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/DisclosureButton.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

// Whole units at every zoom of the tests.
const QRect kPlace(20, 40, 120, 28);
const QRect kStepperPlace(20, 40, 16, 28);
const QRect kLinePlace(20, 40, 120, 4);
const QRect kSquarePlace(20, 40, 24, 24);

QFont unhinted(QFont font) {
  font.setPixelSize(13);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

void prepare(QSlider &slider) {
  slider.setOrientation(Qt::Horizontal);
  slider.setRange(0, 100);
  slider.setValue(70);
}
void prepare(QComboBox &popUp) {
  popUp.setFont(unhinted(popUp.font()));
  popUp.addItem(QStringLiteral("Equal"));
}
void prepare(QLineEdit &field) {
  field.setFont(unhinted(field.font()));
  field.setReadOnly(false);
  field.setFrame(true);
  field.setText(QStringLiteral("440.375 Hz"));
}
void prepare(QPushButton &button) {
  button.setFont(unhinted(button.font()));
  button.setText(QStringLiteral("Settings…"));
}
void prepare(QFrame &box) {
  box.setFrameStyle(QFrame::HLine | QFrame::Sunken);
}

void prepare(AutoResizeStepper &stepper) {
  stepper.setFloatValue(50.0F);
}

void prepare(AutoResizeImageView &view) {
  view.setImage(Picture::imageNamed(QStringLiteral("green28x28")));
}

// A control and the toolkit's own of its kind, in views of their own. The toolkit has no stepper;
// one that is never told of its view stands for it. For what stretches its picture anyway, a
// picture of it at the original size does.
struct Kind {
  const char *name;
  QRect place;
  std::function<QWidget *(QWidget &)> makeZoomed;
  std::function<QWidget *(QWidget &)> makePlain;
};

std::ostream &operator<<(std::ostream &stream, const Kind &kind) {
  return stream << kind.name;
}

template <class Control>
QWidget *make(QWidget &view) {
  auto *control = new Control(&view);
  prepare(*control);
  return control;
}

template <class Zoomed, class Plain>
Kind kind(const char *name, const QRect &place = kPlace) {
  return {name, place, make<Zoomed>, make<Plain>};
}

template <class Control>
Kind pictured(const char *name, const std::function<void(Control &)> &prepareIt) {
  const auto makeIt = [prepareIt](QWidget &view) {
    auto *control = new Control(&view);
    prepareIt(*control);
    return control;
  };
  return {name, kSquarePlace, makeIt, [makeIt](QWidget &view) -> QWidget * {
            const std::unique_ptr<QWidget> original(makeIt(view));
            original->resize(kSquarePlace.size());
            auto *label = new QLabel(&view);
            label->setPixmap(original->grab());
            label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
            return label;
          }};
}

void press(DisclosureButton &button) {
  // Inside it, whatever its size.
  QMouseEvent event(QEvent::MouseButtonPress, QPointF(2.0, 2.0), QPointF(2.0, 2.0), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&button, &event);
}

class ZoomedDrawing : public testing::TestWithParam<Kind> {
 protected:
  ZoomedDrawing() {
    for (QWidget *view : {static_cast<QWidget *>(&mView), &mPlainView}) {
      view->resize(200, 100);
      view->show();
    }
    mZoomed = GetParam().makeZoomed(mView);
    mPlain = GetParam().makePlain(mPlainView);
    for (QWidget *control : {mZoomed, mPlain}) {
      control->setGeometry(GetParam().place);
      control->show();
    }
    // With no window active, none of them has the focus.
    mOther.show();
    mOther.activateWindow();
    QApplication::processEvents();
  }

  void zoomTo(double zoom) {
    mView.resize(qRound(200.0 * zoom), qRound(100.0 * zoom));
    QApplication::processEvents();
  }
  // As its view shows it.
  static QImage look(QWidget &widget) {
    // A relayout ends the editing of a field, and the selection with it.
    if (auto *field = qobject_cast<QLineEdit *>(&widget))
      field->setSelection(2, 5);
    return widget.parentWidget()
        ->grab(widget.geometry())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
  }

  ContentView mView;
  QWidget mPlainView;
  QWidget mOther;
  QWidget *mZoomed = nullptr;
  QWidget *mPlain = nullptr;
};

// The mean over all colour channels, of 255, of squares of four by four original units: small
// enough for every letter and arrow, large enough to even out how finely their edges are drawn.
double difference(const QImage &zoomed, const QImage &original) {
  const QSize squares = original.size() / 4;
  const auto coarse = [&squares](const QImage &image) {
    return image.scaled(squares, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  };
  const QImage first = coarse(zoomed);
  const QImage second = coarse(original);
  double sum = 0.0;
  for (int y = 0; y < squares.height(); ++y)
    for (int x = 0; x < squares.width(); ++x) {
      const QColor one = first.pixelColor(x, y);
      const QColor other = second.pixelColor(x, y);
      sum += std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
             std::abs(one.blue() - other.blue());
    }
  return sum / (3.0 * squares.width() * squares.height());
}

TEST_P(ZoomedDrawing, IsTheToolkitsOwnAtTheOriginalSize) {
  EXPECT_EQ(look(*mZoomed), look(*mPlain));
  zoomTo(2.0);
  zoomTo(1.0);
  EXPECT_EQ(look(*mZoomed), look(*mPlain));
}

// What tells a zoomed drawing from one that was left as it is: of all controls, the former differ
// from the original by 3 of 255 at most, the latter, when they are enlarged, by 5 at least.
constexpr double kFinerDrawing = 3.5;

TEST_P(ZoomedDrawing, DiffersFromTheOriginalOnlyByTheFinerDrawing) {
  const QImage original = look(*mPlain);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    zoomTo(zoom);
    const QImage zoomed = look(*mZoomed);
    ASSERT_EQ(zoomed.size(), (GetParam().place.size().toSizeF() * zoom).toSize());
    mPlain->resize(zoomed.size());
    const QImage unzoomed = look(*mPlain);
    if (zoom < 1.0) {
      // Coarser, rather.
      EXPECT_LE(difference(zoomed, original), difference(unzoomed, original));
    } else {
      EXPECT_LT(difference(zoomed, original), kFinerDrawing);
    }
    if (zoom > 1.0) {
      EXPECT_GT(difference(unzoomed, original), kFinerDrawing);
    }
  }
}

TEST_P(ZoomedDrawing, KeepsItsFontAndItsBounds) {
  const QFont font = mZoomed->font();
  for (const double zoom : kZooms) {
    zoomTo(zoom);
    EXPECT_EQ(mZoomed->font(), font);
    EXPECT_EQ(dynamic_cast<AutoResize &>(*mZoomed).bounds(),
              QRectF(QPointF(), GetParam().place.size()));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Controls, ZoomedDrawing,
    testing::Values(kind<AutoResizeSlider, QSlider>("Slider"),
                    kind<AutoResizePopUpButton, QComboBox>("PopUpButton"),
                    kind<AutoResizeTextField, QLineEdit>("TextField"),
                    kind<HiddenButton, QPushButton>("Button"),
                    kind<AutoResizeBox, QFrame>("Box", kLinePlace),
                    kind<AutoResizeStepper, AutoResizeStepper>("Stepper", kStepperPlace),
                    pictured<AutoResizeImageView>("ImageView", [](auto &view) { prepare(view); }),
                    pictured<DisclosureButton>("ClosedDisclosureButton",
                                               [](auto &button) { button.setState(0); }),
                    pictured<DisclosureButton>("OpenDisclosureButton",
                                               [](auto &button) { button.setState(1); }),
                    pictured<DisclosureButton>("PressedDisclosureButton", press)),
    [](const auto &test) { return std::string(test.param.name); });

}  // namespace
}  // namespace orvane::test
