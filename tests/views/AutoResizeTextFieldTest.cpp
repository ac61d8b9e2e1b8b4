#include "views/AutoResizeTextField.h"

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

const QString kText = QStringLiteral("440.375 Hz and more");
const QRect kPlace(20, 40, 150, 26);

// In the window's units, by the distance from the field's left edge.
QPointF at(double x) {
  return {20.0 + x, 53.0};
}

class AutoResizeTextFieldTest : public testing::Test {
 protected:
  AutoResizeTextFieldTest() {
    mField->setEditable(true);
    mField->setFontPixelSize(13);
    mField->setStringValue(kText);
    mPlain.setFont(mField->font());
    mPlain.setGeometry(kPlace);
    mPlain.setText(kText);
    QObject::connect(&*mField, &AutoResizeTextField::action, [this] { ++mActions; });
  }

  // The character at that distance in the toolkit's own field of the original size.
  int character(double x) { return mPlain.cursorPositionAt(QPoint(qRound(x), 13)); }

  ZoomRig<AutoResizeTextField> mField{kPlace};
  QLineEdit mPlain;
  int mActions = 0;
};

TEST_F(AutoResizeTextFieldTest, PutsTheTextCursorWhereItIsClickedAtEveryZoom) {
  ASSERT_LT(character(30.0), character(60.0));
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    for (const double x : {3.0, 12.0, 30.0, 47.0, 60.0, 91.0, 145.0}) {
      mField.click(at(x));
      EXPECT_EQ(mField->cursorPosition(), character(x));
      EXPECT_TRUE(mField->hasFocus());
    }
  }
}

TEST_F(AutoResizeTextFieldTest, AKeyThatIsHeldSinceBeforeItGotTheKeyboardTypesNothing) {
  const auto press = [this](bool isRepeated) {
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "),
                    isRepeated);
    QCoreApplication::sendEvent(&*mField, &event);
  };
  mField.zoomTo(1.0);
  mField.click(at(3.0));
  press(true);
  press(true);
  EXPECT_EQ(mField->stringValue(), kText);

  mField->end(false);
  press(false);
  press(true);
  EXPECT_EQ(mField->stringValue(), kText + QStringLiteral("  "));
}

TEST_F(AutoResizeTextFieldTest, PutsTheTextCursorWhereAScrolledTextIsClicked) {
  const QString text = kText + kText;
  mField->setStringValue(text);
  mPlain.setText(text);
  // The toolkit scrolls where it draws.
  mPlain.setCursorPosition(static_cast<int>(text.size()));
  mPlain.grab();
  ASSERT_GT(character(30.0), 20);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    mField->setFocus();
    mField.key(Qt::Key_Home);
    mField.key(Qt::Key_End);
    mField->grab();
    for (const double x : {30.0, 60.0, 91.0}) {
      mField.click(at(x));
      EXPECT_EQ(mField->cursorPosition(), character(x));
    }
  }
}

TEST_F(AutoResizeTextFieldTest, SelectsWhatTheMouseIsDraggedOverAtEveryZoom) {
  const QString selected = kText.mid(character(20.0), character(75.0) - character(20.0));
  ASSERT_GT(selected.size(), 3);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    mField.press(at(20.0));
    mField.drag(at(50.0));
    mField.drag(at(75.0));
    mField.release(at(75.0));
    EXPECT_EQ(mField->selectedText(), selected);
    mField->deselect();
    // Another click in its time would be the second of a pair.
    mField->clearFocus();
  }
}

TEST_F(AutoResizeTextFieldTest, IsTypedInAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    mField->setStringValue(QStringLiteral("440"));
    mField.click(at(145.0));
    mActions = 0;
    mField.key(Qt::Key_Backspace);
    mField.key(Qt::Key_2, QStringLiteral("2"));
    EXPECT_EQ(mField->stringValue(), QStringLiteral("442"));
    EXPECT_EQ(mActions, 0);
    mField.key(Qt::Key_Return);
    EXPECT_EQ(mActions, 1);
    // Nothing has been typed since.
    mField->clearFocus();
    EXPECT_EQ(mActions, 1);
    mField.click(at(145.0));
    mField.key(Qt::Key_0, QStringLiteral("0"));
    mField->clearFocus();
    EXPECT_EQ(mActions, 2);
  }
}

TEST_F(AutoResizeTextFieldTest, IsNotReachedOutsideItsFrame) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    mField->clearFocus();
    for (const QPointF &place : {at(-2.0), at(152.0), QPointF(80.0, 38.0), QPointF(80.0, 68.0)}) {
      mField.click(place);
      EXPECT_FALSE(mField->hasFocus());
    }
    mField.click(QPointF(22.0, 42.0));
    EXPECT_TRUE(mField->hasFocus());
    mField->clearFocus();
    mField.click(QPointF(168.0, 64.0));
    EXPECT_TRUE(mField->hasFocus());
  }
}

TEST_F(AutoResizeTextFieldTest, BlinksTheWholeTextCursorAsItIsDrawn) {
  const int flashTime = QApplication::cursorFlashTime();
  QApplication::setCursorFlashTime(100);
  mField.zoomTo(2.0);
  mField.click(at(60.0));
  const QRect cursor = mField->inputMethodQuery(Qt::ImCursorRectangle).toRectF().toAlignedRect();
  Repaints repaints(*mField);
  const QImage look = mField->grab().toImage();
  QImage other;
  repaints.forget();
  EXPECT_TRUE(waitFor([&] { return repaints.count() > 0; }));
  EXPECT_EQ(QRegion(cursor) - repaints.region(), QRegion());
  EXPECT_TRUE(waitFor([&] {
    other = mField->grab().toImage();
    return other != look;
  }));
  QApplication::setCursorFlashTime(flashTime);
  QRect changed;
  for (int y = 0; y < look.height(); ++y)
    for (int x = 0; x < look.width(); ++x)
      if (look.pixel(x, y) != other.pixel(x, y))
        changed |= QRect(x, y, 1, 1);
  // One unit wide, wherever that begins, and as high as the text.
  EXPECT_GE(changed.width(), 2);
  EXPECT_LE(changed.width(), 3);
  EXPECT_GE(changed.height(), 26);
  EXPECT_TRUE(cursor.contains(changed));
}

TEST_F(AutoResizeTextFieldTest, TellsInputMethodsWhereTheTextCursorIsSeen) {
  mField.click(at(60.0));
  const QRectF before = mField->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
  mField.zoomTo(2.0);
  const QRectF after = mField->inputMethodQuery(Qt::ImCursorRectangle).toRectF();
  EXPECT_EQ(after, QRectF(before.topLeft() * 2.0, before.size() * 2.0));
}

TEST_F(AutoResizeTextFieldTest, IsAPlainLabelUnlessItIsEditable) {
  mField->setEditable(false);
  EXPECT_FALSE(mField->isEditable());
  EXPECT_FALSE(mField->hasFrame());
  mField.click(at(60.0));
  EXPECT_FALSE(mField->hasFocus());
  mField.key(Qt::Key_Tab);
  EXPECT_FALSE(mField->hasFocus());
  EXPECT_FALSE(AutoResizeTextField().isEditable());
}

TEST_F(AutoResizeTextFieldTest, DoesNotCutALabelThatIsTooLongForItsFrame) {
  mField->setEditable(false);
  mField->resize(30, 26);
  mField->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mField.zoomTo(zoom);
    QImage image(qRound(30.0 * zoom), qRound(26.0 * zoom), QImage::Format_RGB32);
    image.fill(Qt::white);
    mField->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    // The end of the text stands at its frame's right edge.
    bool isDrawn = false;
    for (int y = 0; y < image.height(); ++y)
      isDrawn |= image.pixelColor(image.width() - qRound(3.0 * zoom), y).lightness() < 200;
    EXPECT_TRUE(isDrawn);
  }
}

TEST_F(AutoResizeTextFieldTest, IsNotDrawnAgainForTheSameText) {
  for (const bool isEditable : {true, false}) {
    mField->setEditable(isEditable);
    mField->setFloatValue(440.5F);
    Repaints repaints(*mField);
    mField->setStringValue(QStringLiteral("440.5"));
    mField->setFloatValue(440.5F);
    EXPECT_EQ(repaints.count(), 0);
    mField->setIntValue(440);
    EXPECT_EQ(repaints.count(), 1);
  }
}

}  // namespace
}  // namespace orvane::test
