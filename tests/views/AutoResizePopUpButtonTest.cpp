#include "views/AutoResizePopUpButton.h"

#include <cmath>

#include <QAbstractItemView>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

class PopUp : public ZoomRig<AutoResizePopUpButton> {
 public:
  PopUp() : ZoomRig(QSize(120, 26)) {
    control->setFontPixelSize(13);
    for (const char *title : {"C", "D", "E", "F"})
      control->addItemWithTitle(QString::fromLatin1(title));
  }
  ~PopUp() override { control->hidePopup(); }

  QRect itemOnScreen(int index) const {
    const QAbstractItemView *list = control->view();
    const QRect item = list->visualRect(control->model()->index(index, 0));
    return {list->viewport()->mapToGlobal(item.topLeft()), item.size()};
  }
  QRect buttonOnScreen() const { return {control->mapToGlobal(QPoint()), control->size()}; }
  void clickItem(int index) {
    QWidget *viewport = control->view()->viewport();
    const QPointF place = viewport->mapFromGlobal(itemOnScreen(index).center());
    for (const auto type :
         {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, place, viewport->mapToGlobal(place),
                        type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                        Qt::NoModifier);
      QApplication::sendEvent(viewport, &event);
    }
    QApplication::processEvents();
  }
  void keyInList(int code) {
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier);
    QApplication::sendEvent(control->view(), &press);
    QApplication::processEvents();
  }
};

TEST(AutoResizePopUpButton, IsAListOfTitlesWithOneSelected) {
  AutoResizePopUpButton button;
  EXPECT_EQ(button.indexOfSelectedItem(), -1);
  button.addItemWithTitle(QStringLiteral("C"));
  button.addItemWithTitle(QStringLiteral("E"));
  button.insertItemWithTitle(QStringLiteral("D"), 1);
  EXPECT_EQ(button.numberOfItems(), 3);
  EXPECT_EQ(button.itemTitleAtIndex(1), QStringLiteral("D"));
  EXPECT_EQ(button.indexOfItemWithTitle(QStringLiteral("E")), 2);
  EXPECT_EQ(button.indexOfItemWithTitle(QStringLiteral("e")), -1);
  button.selectItemAtIndex(2);
  EXPECT_EQ(button.titleOfSelectedItem(), QStringLiteral("E"));
  EXPECT_EQ(button.indexOfSelectedItem(), 2);
  button.setToolTipAtIndex(QStringLiteral("the third"), 2);
  EXPECT_EQ(button.toolTipAtIndex(2), QStringLiteral("the third"));
  button.removeAllItems();
  EXPECT_EQ(button.numberOfItems(), 0);
  EXPECT_EQ(button.titleOfSelectedItem(), QString());
}

TEST(AutoResizePopUpButton, DoesNotActWhenTheProgramRebuildsIt) {
  PopUp popUp;
  popUp.control->selectItemAtIndex(2);
  popUp.control->removeAllItems();
  popUp.control->addItemWithTitle(QStringLiteral("A"));
  popUp.control->addItemWithTitle(QStringLiteral("B"));
  popUp.control->selectItemAtIndex(1);
  EXPECT_EQ(popUp.control->titleOfSelectedItem(), QStringLiteral("B"));
  EXPECT_EQ(popUp.actions, 0);
}

TEST(AutoResizePopUpButton, MakesDividersOfTheDescribedDashesOnly) {
  AutoResizePopUpButton button;
  button.setProperty("dividers", true);
  button.addItem(QStringLiteral("Equal temperament"));
  button.addItem(QStringLiteral("-"));
  button.addItemWithTitle(QStringLiteral("-"));
  const auto isChoosable = [&button](int index) {
    return (button.model()->flags(button.model()->index(index, 0)) & Qt::ItemIsSelectable) != 0;
  };
  EXPECT_TRUE(isChoosable(0));
  EXPECT_FALSE(isChoosable(1));
  EXPECT_EQ(button.itemTitleAtIndex(1), QString());
  EXPECT_TRUE(isChoosable(2));
  EXPECT_EQ(button.itemTitleAtIndex(2), QStringLiteral("-"));
  button.selectItemAtIndex(1);
  EXPECT_EQ(button.indexOfSelectedItem(), 1);
}

TEST(AutoResizePopUpButton, StepsOverDividersWithTheKeys) {
  PopUp popUp;
  popUp.control->removeAllItems();
  popUp.control->setHasDividers(true);
  for (const char *title : {"A", "-", "B"})
    popUp.control->addItem(QString::fromLatin1(title));
  popUp.control->setFocus();
  popUp.key(Qt::Key_Down);
  EXPECT_EQ(popUp.control->indexOfSelectedItem(), 2);
  EXPECT_EQ(popUp.actions, 1);
}

TEST(AutoResizePopUpButton, ActsWhenTheUserChoosesAnItemAlsoTheSelectedOne) {
  PopUp popUp;
  popUp.control->showPopup();
  popUp.clickItem(2);
  EXPECT_EQ(popUp.control->indexOfSelectedItem(), 2);
  EXPECT_EQ(popUp.actions, 1);
  popUp.control->showPopup();
  popUp.clickItem(2);
  EXPECT_EQ(popUp.actions, 2);
  popUp.control->showPopup();
  popUp.keyInList(Qt::Key_Down);
  popUp.keyInList(Qt::Key_Return);
  EXPECT_EQ(popUp.control->indexOfSelectedItem(), 3);
  EXPECT_EQ(popUp.actions, 3);
  popUp.control->showPopup();
  popUp.keyInList(Qt::Key_Escape);
  EXPECT_EQ(popUp.actions, 3);
}

TEST(AutoResizePopUpButton, IgnoresTheWheel) {
  PopUp popUp;
  popUp.control->setFocus();
  popUp.wheel(-120);
  EXPECT_EQ(popUp.control->indexOfSelectedItem(), 0);
  EXPECT_EQ(popUp.actions, 0);
}

TEST(AutoResizePopUpButton, OpensItsListOverTheButtonAsItIsSeen) {
  for (const double zoom : kZooms) {
    PopUp popUp;
    popUp.zoom(zoom);
    popUp.control->selectItemAtIndex(1);
    // The edge furthest from where the button would be unzoomed.
    popUp.mouse(QEvent::MouseButtonPress, 119.0, 25.0);
    ASSERT_TRUE(popUp.control->view()->isVisible()) << zoom;
    const QRect list = popUp.control->view()->window()->geometry();
    const QRect button = popUp.buttonOnScreen();
    EXPECT_NEAR(list.left(), button.left(), 2) << zoom;
    EXPECT_GE(list.width(), button.width()) << zoom;
    // The selected item lies on the button.
    EXPECT_TRUE(button.contains(popUp.itemOnScreen(1).center())) << zoom;
  }
}

TEST(AutoResizePopUpButton, ShowsItsListInATextAtLeastAsLargeAsTheButtons) {
  for (const double zoom : kZooms) {
    PopUp popUp;
    popUp.control->addItemWithTitle(QStringLiteral("A title much wider than its button is"));
    popUp.zoom(zoom);
    popUp.control->showPopup();
    const int pixels = static_cast<int>(std::lround(13.0 * std::max(1.0, zoom)));
    // A line of text needs its font's pixels at least.
    EXPECT_GE(popUp.itemOnScreen(4).height(), pixels) << zoom;
    QFont font = popUp.control->font();
    font.setPixelSize(pixels);
    EXPECT_GE(popUp.control->view()->viewport()->width(),
              QFontMetrics(font).horizontalAdvance(popUp.control->itemTitleAtIndex(4)))
        << zoom;
    EXPECT_EQ(popUp.control->font().pixelSize(), 13);
    popUp.control->hidePopup();
  }
}

TEST(AutoResizePopUpButton, KeepsItsListThroughTheReleaseOfTheClickThatOpenedIt) {
  PopUp popUp;
  popUp.zoom(3.0);
  popUp.control->selectItemAtIndex(1);
  popUp.mouse(QEvent::MouseButtonPress, 60.0, 13.0);
  QWidget *viewport = popUp.control->view()->viewport();
  // A hand that trembles by a pixel, over an item.
  const QPoint press = popUp.control->mapToGlobal(QPoint(180, 40));
  ASSERT_TRUE(popUp.itemOnScreen(1).contains(press));
  const QPointF place = viewport->mapFromGlobal(press);
  for (const auto type : {QEvent::MouseMove, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, place, viewport->mapToGlobal(place),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseMove ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
  }
  QApplication::processEvents();
  EXPECT_TRUE(popUp.control->view()->isVisible());
  EXPECT_EQ(popUp.actions, 0);
}

}  // namespace
}  // namespace orvane::test
