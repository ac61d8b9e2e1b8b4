#include "views/AutoResizePopUpButton.h"

#include <vector>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QStandardItemModel>
#include <QTextDocumentFragment>
#include <QToolTip>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

const QPointF kMiddle(80.0, 53.0);

class AutoResizePopUpButtonTest : public testing::Test {
 protected:
  AutoResizePopUpButtonTest() {
    mPopUp->setFontPixelSize(13);
    mPopUp->setHasDividers(true);
    // As a description does it.
    for (const char *title : {"Equal", "Pure", "-", "Meantone", "Open…"})
      mPopUp->addItem(QString::fromUtf8(title));
    mPopUp->selectItemAtIndex(1);
    QObject::connect(&*mPopUp, &AutoResizePopUpButton::action,
                     [this] { mChosen.push_back(mPopUp->indexOfSelectedItem()); });
  }

  QWidget &list() { return *mPopUp->view()->window(); }
  QRect row(int index) {
    QAbstractItemView &view = *mPopUp->view();
    const QRect rect = view.visualRect(view.model()->index(index, 0));
    return {view.viewport()->mapToGlobal(rect.topLeft()), rect.size()};
  }
  void open() {
    mPopUp.click(kMiddle);
    ASSERT_TRUE(list().isVisible());
  }
  void choose(int index) {
    open();
    // The list takes a release close to where it was opened for that of the opening click.
    mPopUp.hoverOnScreen(row(0).topLeft() + QPoint(2, 2));
    mPopUp.clickOnScreen(row(index).center());
  }

  ZoomRig<AutoResizePopUpButton> mPopUp{QRect(20, 40, 120, 26)};
  std::vector<int> mChosen;
};

using Chosen = std::vector<int>;

TEST_F(AutoResizePopUpButtonTest, IsChosenFromWithTheMouseAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    mPopUp->selectItemAtIndex(1);
    mChosen.clear();
    choose(3);
    EXPECT_FALSE(list().isVisible());
    choose(0);
    // The same one again.
    choose(0);
    EXPECT_EQ(mChosen, (Chosen{3, 0, 0}));
  }
}

TEST_F(AutoResizePopUpButtonTest, IsChosenFromWithTheKeysAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    mPopUp->setFocus();
    mPopUp->selectItemAtIndex(1);
    mChosen.clear();
    mPopUp.key(Qt::Key_Space);
    ASSERT_TRUE(list().isVisible());
    mPopUp.key(Qt::Key_Down);
    mPopUp.key(Qt::Key_Return);
    EXPECT_FALSE(list().isVisible());
    // Over the divider. Then without the list.
    EXPECT_EQ(mChosen, Chosen{3});
    mPopUp.key(Qt::Key_Up);
    EXPECT_EQ(mChosen, (Chosen{3, 1}));
  }
}

TEST_F(AutoResizePopUpButtonTest, OpensItsListOverTheButtonAsItIsDrawn) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    mPopUp->selectItemAtIndex(3);
    open();
    const QRect button(mPopUp->mapToGlobal(QPoint()), mPopUp->size());
    EXPECT_EQ(button.width(), qRound(120.0 * zoom));
    // A window of its own, which the button's does not clip.
    EXPECT_TRUE(list().isWindow());
    EXPECT_NEAR(list().geometry().left(), button.left(), 8);
    EXPECT_GE(list().width(), button.width() - 8);
    EXPECT_TRUE(list().geometry().intersects(button));
    EXPECT_TRUE(list().screen()->geometry().contains(list().geometry()));
    // The text does not get smaller than it is in the window, and grows with it.
    const QFont font = mPopUp->itemData(0, Qt::FontRole).value<QFont>();
    EXPECT_EQ(font.pixelSize(), zoom <= 1.0 ? 13 : zoom == 1.5 ? 20 : zoom == 2.0 ? 26 : 39);
    for (int index = 0; index < 5; ++index)
      EXPECT_GE(row(index).height(), index == 2 ? 1 : font.pixelSize());
    mPopUp.key(Qt::Key_Escape);
    EXPECT_FALSE(list().isVisible());
    EXPECT_EQ(mChosen, Chosen{});
  }
}

TEST_F(AutoResizePopUpButtonTest, OpensUpToItsEdgesAndNotBeyond) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    for (const QPointF &place :
         {QPointF(22.0, 42.0), QPointF(138.0, 42.0), QPointF(22.0, 64.0), QPointF(138.0, 64.0)}) {
      mPopUp.press(place);
      EXPECT_TRUE(list().isVisible());
      mPopUp->hidePopup();
      mPopUp.release(place);
    }
    for (const QPointF &place :
         {QPointF(18.0, 53.0), QPointF(142.0, 53.0), QPointF(80.0, 38.0), QPointF(80.0, 68.0)}) {
      mPopUp.click(place);
      EXPECT_FALSE(list().isVisible());
    }
  }
}

TEST_F(AutoResizePopUpButtonTest, DoesNotLetTheUserChooseADivider) {
  EXPECT_EQ(mPopUp->itemTitleAtIndex(2), QString());
  open();
  mPopUp.hoverOnScreen(row(0).topLeft() + QPoint(2, 2));
  mPopUp.clickOnScreen(row(2).center());
  mPopUp->hidePopup();
  EXPECT_EQ(mPopUp->indexOfSelectedItem(), 1);
  EXPECT_EQ(mChosen, Chosen{});
  mPopUp->setFocus();
  mPopUp.key(Qt::Key_Down);
  EXPECT_EQ(mChosen, Chosen{3});
  // The program may; and what it adds is a title like others.
  mPopUp->selectItemAtIndex(2);
  EXPECT_EQ(mPopUp->indexOfSelectedItem(), 2);
  mPopUp->addItemWithTitle(QStringLiteral("-"));
  EXPECT_EQ(mPopUp->itemTitleAtIndex(5), QStringLiteral("-"));
  mPopUp->selectItemAtIndex(3);
  choose(5);
  EXPECT_EQ(mChosen, (Chosen{3, 5}));
}

TEST_F(AutoResizePopUpButtonTest, KeepsItsListThroughTheReleaseOfAHandThatTrembles) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    mPopUp.press(kMiddle);
    mPopUp.drag(kMiddle + QPointF(2.0 / zoom, 0.0));
    mPopUp.release(kMiddle + QPointF(2.0 / zoom, 0.0));
    EXPECT_TRUE(list().isVisible());
    EXPECT_EQ(mChosen, Chosen{});
    mPopUp->hidePopup();
  }
}

TEST_F(AutoResizePopUpButtonTest, MakesItsListWideEnoughForItsTitles) {
  const QString title = QStringLiteral("A title much wider than its button is");
  mPopUp->addItemWithTitle(title);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    open();
    const QFont font = mPopUp->itemData(5, Qt::FontRole).value<QFont>();
    EXPECT_GE(mPopUp->view()->viewport()->width(), QFontMetrics(font).horizontalAdvance(title));
    mPopUp->hidePopup();
  }
}

TEST_F(AutoResizePopUpButtonTest, EndsATitleThatIsTooLongForItAfterAWholeLetter) {
  const QString title = QStringLiteral("Built-in Audio Analog Stereo");
  mPopUp->addItemWithTitle(title);
  ZoomRig<AutoResizePopUpButton> shortened{QRect(20, 40, 120, 26)};
  shortened->setFontPixelSize(13);
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mPopUp.zoomTo(zoom);
    shortened.zoomTo(zoom);
    mPopUp->selectItemAtIndex(5);
    mPopUp->clearFocus();
    const QImage look = mPopUp->grab().toImage();
    int letters = 0;
    do {
      shortened->removeAllItems();
      shortened->addItemWithTitle(title.left(++letters).trimmed() + QStringLiteral("…"));
      shortened->clearFocus();
    } while (shortened->grab().toImage() != look && letters < title.size());
    // 120 units less the arrow hold some twelve letters of 13 units.
    EXPECT_GE(letters, 8);
    EXPECT_LE(letters, 20);
    EXPECT_EQ(mPopUp->titleOfSelectedItem(), title);
  }
}

TEST_F(AutoResizePopUpButtonTest, TellsATitleThatIsTooLongForItInItsToolTip) {
  const auto toolTip = [this] {
    QToolTip::hideText();
    QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), mPopUp->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&*mPopUp, &event);
    return QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText();
  };
  mPopUp->setToolTip(QStringLiteral("The tuning"));
  EXPECT_EQ(toolTip(), QStringLiteral("The tuning"));
  const QString title = QStringLiteral("Line 1 & 2 <i>of the interface</i> under the desk");
  mPopUp->addItemWithTitle(title);
  mPopUp->selectItemAtIndex(5);
  EXPECT_EQ(toolTip(), title);
  mPopUp->selectItemAtIndex(1);
  EXPECT_EQ(toolTip(), QStringLiteral("The tuning"));
}

TEST_F(AutoResizePopUpButtonTest, IgnoresTheWheel) {
  mPopUp->setFocus();
  mPopUp.wheel(kMiddle);
  EXPECT_EQ(mPopUp->indexOfSelectedItem(), 1);
  EXPECT_EQ(mChosen, Chosen{});
}

TEST_F(AutoResizePopUpButtonTest, IsRefilledWithoutAnActionAndShowsTheNewTitle) {
  const QImage before = mPopUp->grab().toImage();
  Repaints repaints(*mPopUp);
  mPopUp->removeAllItems();
  EXPECT_EQ(mPopUp->numberOfItems(), 0);
  EXPECT_EQ(mPopUp->indexOfSelectedItem(), -1);
  EXPECT_EQ(mPopUp->titleOfSelectedItem(), QString());
  mPopUp->addItemWithTitle(QStringLiteral("Microphone"));
  mPopUp->addItemWithTitle(QStringLiteral("Line"));
  mPopUp->insertItemWithTitle(QStringLiteral("Monitor"), 1);
  mPopUp->selectItemAtIndex(2);
  EXPECT_EQ(mPopUp->titleOfSelectedItem(), QStringLiteral("Line"));
  EXPECT_EQ(mPopUp->itemTitleAtIndex(1), QStringLiteral("Monitor"));
  EXPECT_EQ(mPopUp->numberOfItems(), 3);
  EXPECT_GT(repaints.count(), 0);
  EXPECT_EQ(mChosen, Chosen{});

  const QImage after = mPopUp->grab().toImage();
  EXPECT_NE(after, before);
  ZoomRig<AutoResizePopUpButton> fresh{QRect(20, 40, 120, 26)};
  fresh->setFontPixelSize(13);
  fresh->addItemWithTitle(QStringLiteral("Line"));
  mPopUp->clearFocus();
  fresh->clearFocus();
  EXPECT_EQ(mPopUp->grab().toImage(), fresh->grab().toImage());
}

TEST_F(AutoResizePopUpButtonTest, FindsTheFirstItemWithExactlyATitle) {
  mPopUp->addItemWithTitle(QStringLiteral("Pure"));
  EXPECT_EQ(mPopUp->indexOfItemWithTitle(QStringLiteral("Pure")), 1);
  EXPECT_EQ(mPopUp->indexOfItemWithTitle(QStringLiteral("pure")), -1);
  EXPECT_EQ(mPopUp->indexOfItemWithTitle(QStringLiteral("Pur")), -1);
}

TEST_F(AutoResizePopUpButtonTest, HasAToolTipForEachItem) {
  mPopUp->setToolTipAtIndex(QStringLiteral("All fifths alike"), 0);
  EXPECT_EQ(mPopUp->toolTipAtIndex(0), QStringLiteral("All fifths alike"));
  EXPECT_EQ(mPopUp->toolTipAtIndex(1), QString());
  mPopUp->selectItemAtIndex(-1);
  EXPECT_EQ(mPopUp->indexOfSelectedItem(), -1);
}

}  // namespace
}  // namespace orvane::test
