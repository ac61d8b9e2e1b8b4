#include "views/AutoResizeTextField.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

class Field : public ZoomRig<AutoResizeTextField> {
 public:
  explicit Field(const char *text, Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter)
      : ZoomRig(QSize(90, 26)) {
    control->setEditable(true);
    control->setFontPixelSize(13);
    control->setAlignment(alignment);
    control->setText(QString::fromLatin1(text));
  }

  // Where the drawn selection ends, in the widget's pixels.
  int selectionEnd() const {
    const QColor highlight = control->palette().color(QPalette::Highlight);
    const QImage image = drawn();
    // A row above the letters, inside the selection.
    const int row = image.height() / 4;
    for (int x = image.width() - 1; x >= 0; --x) {
      if (image.pixelColor(x, row) == highlight)
        return x + 1;
    }
    return -1;
  }
};

TEST(AutoResizeTextField, ReadsTheNumberThatItsTextBeginsWith) {
  AutoResizeTextField field;
  const auto reads = [&field](const char *text) {
    field.setStringValue(QString::fromUtf8(text));
    return field.floatValue();
  };
  EXPECT_EQ(reads("440.0Hz"), 440.0F);
  EXPECT_EQ(reads(" \t-12dB"), -12.0F);
  EXPECT_EQ(reads("+7"), 7.0F);
  EXPECT_EQ(reads("±0"), 0.0F);
  EXPECT_EQ(reads("499.9"), 499.899993896484375F);
  EXPECT_EQ(reads(".5e1x"), 5.0F);
  EXPECT_EQ(reads(""), 0.0F);
  EXPECT_EQ(reads("nan"), 0.0F);
  EXPECT_EQ(reads("inf"), 0.0F);
  EXPECT_EQ(reads("0x10"), 0.0F);
  EXPECT_EQ(reads("1e-999"), 0.0F);
  EXPECT_EQ(reads("1e999"), std::numeric_limits<float>::max());
}

TEST(AutoResizeTextField, ReadsWholeNumbersAndTheNearestForThoseOutOfRange) {
  AutoResizeTextField field;
  const auto reads = [&field](const char *text) {
    field.setStringValue(QString::fromUtf8(text));
    return field.intValue();
  };
  EXPECT_EQ(reads("37%"), 37);
  EXPECT_EQ(reads(" -3.9"), -3);
  EXPECT_EQ(reads("n/a"), 0);
  EXPECT_EQ(reads("2147483648"), 2147483647);
  EXPECT_EQ(reads("-99999999999999999999"), std::numeric_limits<int>::min());
}

TEST(AutoResizeTextField, ShowsNumbersAsTheShortestText) {
  AutoResizeTextField field;
  field.setFloatValue(349.0F);
  EXPECT_EQ(field.stringValue(), QStringLiteral("349"));
  field.setFloatValue(499.899993896484375F);
  EXPECT_EQ(field.stringValue(), QStringLiteral("499.9"));
  field.setFloatValue(440.37F);
  EXPECT_EQ(field.stringValue(), QStringLiteral("440.37"));
  field.setIntValue(-7);
  EXPECT_EQ(field.stringValue(), QStringLiteral("-7"));
}

TEST(AutoResizeTextField, IsNotDrawnAgainForTheTextItShows) {
  ZoomRig<AutoResizeTextField> rig(QSize(90, 26));
  rig.control->setStringValue(QStringLiteral("440.0Hz"));
  rig.settle();
  rig.control->setStringValue(QStringLiteral("440.0Hz"));
  QApplication::processEvents();
  EXPECT_EQ(rig.paints, 0);
  rig.control->setStringValue(QStringLiteral("440.1Hz"));
  QApplication::processEvents();
  EXPECT_EQ(rig.paints, 1);
}

TEST(AutoResizeTextField, IsALabelThatTheUserCannotEnterUntilItIsMadeEditable) {
  ZoomRig<AutoResizeTextField> rig(QSize(90, 26));
  EXPECT_FALSE(rig.control->isEditable());
  rig.control->setText(QStringLiteral("Tonic:"));
  rig.mouse(QEvent::MouseButtonDblClick, 10, 13);
  EXPECT_FALSE(rig.control->hasFocus());
  EXPECT_FALSE(rig.control->hasSelectedText());
  rig.control->setEditable(true);
  rig.click(10, 13);
  rig.control->setFocus();
  rig.key(Qt::Key_X, QStringLiteral("x"));
  EXPECT_TRUE(rig.control->text().contains(QLatin1Char('x')));
}

TEST(AutoResizeTextField, PutsTheCursorWhereItsDrawingWasClicked) {
  for (const double zoom : kZooms) {
    for (const auto alignment : {Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter}) {
      Field field("WWWW", alignment | Qt::AlignVCenter);
      field.zoom(zoom);
      field.control->setFocus();
      field.control->setSelection(0, 2);
      const int end = field.selectionEnd();
      ASSERT_GT(end, 0);
      field.click(end / zoom, 13.0);
      EXPECT_EQ(field.control->cursorPosition(), 2) << zoom << " " << alignment;
      EXPECT_FALSE(field.control->hasSelectedText());
    }
  }
}

TEST(AutoResizeTextField, PutsTheCursorWhereAScrolledTextWasClicked) {
  for (const double zoom : kZooms) {
    Field field("WWWWWWWWWWWWWWWWWWWWWWWW");
    field.zoom(zoom);
    field.control->setFocus();
    field.control->end(false);
    field.drawn();  // scrolled to its end
    // Before the last two letters, which are wide ones: from the left so that the end stays in
    // view.
    field.control->setSelection(20, 2);
    const int end = field.selectionEnd();
    ASSERT_GT(end, 0);
    field.click(end / zoom, 13.0);
    EXPECT_EQ(field.control->cursorPosition(), 22) << zoom;
  }
}

TEST(AutoResizeTextField, SelectsWhatTheMouseIsDraggedOver) {
  for (const double zoom : kZooms) {
    Field field("WWWW");
    field.zoom(zoom);
    field.control->setFocus();
    field.control->setSelection(0, 2);
    const double end = field.selectionEnd() / zoom;
    field.mouse(QEvent::MouseButtonPress, end, 13.0);
    field.mouse(QEvent::MouseMove, 89.0, 13.0);
    field.mouse(QEvent::MouseButtonRelease, 89.0, 13.0);
    EXPECT_EQ(field.control->selectedText(), QStringLiteral("WW")) << zoom;
  }
}

TEST(AutoResizeTextField, TellsInputMethodsWhereItsCursorIsSeen) {
  for (const double zoom : kZooms) {
    Field field("WWWW");
    field.zoom(zoom);
    field.control->setFocus();
    field.control->setSelection(0, 2);
    const int end = field.selectionEnd();
    const QRectF cursor = field.control->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    EXPECT_NEAR(cursor.center().x(), end, 2.0 * zoom) << zoom;
    EXPECT_NEAR(cursor.center().y(), 13.0 * zoom, 2.0 * zoom) << zoom;
    EXPECT_GT(cursor.height(), 12.0 * zoom) << zoom;
  }
}

TEST(AutoResizeTextField, ActsWhenEditingIsEndedWithReturn) {
  Field field("440");
  field.control->setFocus();
  field.control->selectAll();
  field.key(Qt::Key_4, QStringLiteral("4"));
  field.key(Qt::Key_1, QStringLiteral("1"));
  EXPECT_EQ(field.actions, 0);
  field.key(Qt::Key_Return, QStringLiteral("\r"));
  EXPECT_EQ(field.actions, 1);
  EXPECT_EQ(field.control->floatValue(), 41.0F);
}

TEST(AutoResizeTextField, ActsWhenTheFocusLeavesIt) {
  Field field("440");
  field.control->setFocus();
  field.key(Qt::Key_1, QStringLiteral("1"));
  field.control->clearFocus();
  EXPECT_EQ(field.actions, 1);
}

TEST(AutoResizeTextField, EndsEditingWhenItIsLaidOutAgain) {
  Field field("440");
  field.control->setFocus();
  ASSERT_TRUE(field.control->hasFocus());
  field.key(Qt::Key_1, QStringLiteral("1"));
  field.view.resize(240, 60);
  EXPECT_EQ(field.view.focusWidget(), nullptr);
  EXPECT_EQ(field.actions, 1);
}

TEST(AutoResizeTextField, LeavesTheFocusAloneAsALabel) {
  ContentView view;
  view.resize(200, 100);
  AutoResizeTextField label(&view);
  QLineEdit other(&view);
  view.show();
  view.activateWindow();
  other.setFocus();
  view.resize(300, 100);
  EXPECT_EQ(view.focusWidget(), &other);
}

// The letters of a big note fill bounds that are lower than the font's own box.
TEST(AutoResizeTextField, DoesNotCutALabelAtTheFontsBox) {
  const auto ink = [](const QSize &size) {
    ZoomRig<AutoResizeTextField> rig(size);
    rig.control->setFontPixelSize(96);
    rig.control->setAlignment(Qt::AlignCenter);
    rig.control->setText(QStringLiteral("A"));
    const QImage image = rig.drawn();
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x)
        dark += image.pixelColor(x, y).lightness() < 100 ? 1 : 0;
    }
    return dark;
  };
  EXPECT_GT(ink(QSize(96, 140)), 500);
  // The font's box is about 112 high, the letter 70.
  EXPECT_EQ(ink(QSize(96, 96)), ink(QSize(96, 140)));
}

}  // namespace
}  // namespace orvane::test
