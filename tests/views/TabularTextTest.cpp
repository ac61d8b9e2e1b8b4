#include "views/TabularText.h"

#include <map>
#include <sstream>
#include <utility>

#include <QFontDatabase>
#include <QImage>
#include <QPainter>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizeTextField.h"

namespace orvane::test {
namespace {

// A font of 20 pixels whose figures and signs differ in width, while it is there. Every character
// is a block of so many columns, 10 rows above the base line, with two columns free on both sides.
class UnevenFont {
 public:
  UnevenFont()
      : mId(QFontDatabase::addApplicationFontFromData(QByteArray::fromStdString(description()))) {}
  ~UnevenFont() { QFontDatabase::removeApplicationFont(mId); }
  UnevenFont(const UnevenFont &) = delete;
  UnevenFont &operator=(const UnevenFont &) = delete;

  bool exists() const { return mId >= 0; }
  QFont font() const {
    QFont font(QStringLiteral("Orvane Uneven"));
    font.setPixelSize(20);
    return font;
  }

 private:
  static std::string description() {
    static const std::map<char32_t, int> kColumns = {
        {U'0', 8}, {U'1', 2},  {U'2', 6}, {U'3', 6}, {U'4', 6}, {U'5', 6}, {U'6', 6},
        {U'7', 4}, {U'8', 10}, {U'9', 6}, {U'+', 6}, {U'-', 2}, {U'±', 8}, {U'C', 5}};
    std::ostringstream text;
    text << "STARTFONT 2.1\nFONT -orvane-Orvane Uneven-medium-r-normal--20-200-72-72-p-100-"
            "iso10646-1\nSIZE 20 72 72\nFONTBOUNDINGBOX 14 20 0 -4\nSTARTPROPERTIES 5\n"
            "FAMILY_NAME \"Orvane Uneven\"\nFONT_ASCENT 16\nFONT_DESCENT 4\n"
            "CHARSET_REGISTRY \"ISO10646\"\nCHARSET_ENCODING \"1\"\nENDPROPERTIES\nCHARS "
         << kColumns.size() << '\n';
    for (const auto &[character, columns] : kColumns) {
      const auto code = static_cast<unsigned>(character);
      text << "STARTCHAR u" << code << "\nENCODING " << code << "\nSWIDTH 500 0\nDWIDTH "
           << columns + 4 << " 0\nBBX " << columns << " 10 2 0\nBITMAP\n";
      for (int row = 0; row < 10; ++row)
        text << (columns > 8 ? "FFFF\n" : "FF\n");
      text << "ENDCHAR\n";
    }
    text << "ENDFONT\n";
    return text.str();
  }

  int mId;
};

// The first and the last column of each character, from the left.
using Columns = std::vector<std::pair<int, int>>;

Columns columnsOf(const QImage &image) {
  Columns columns;
  bool wasInk = false;
  for (int x = 0; x < image.width(); ++x) {
    bool isInk = false;
    for (int y = 0; y < image.height(); ++y)
      isInk = isInk || qGray(image.pixel(x, y)) < 128;
    if (isInk && !wasInk)
      columns.emplace_back(x, x);
    if (isInk)
      columns.back().second = x;
    wasInk = isInk;
  }
  return columns;
}

class TabularTextTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(mFont.exists()); }

  QImage drawn(const QString &text, Qt::Alignment alignment,
               const QRectF &rect = QRectF(20.0, 0.0, 100.0, 40.0)) const {
    QImage image(140, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(mFont.font());
    drawTabularText(painter, rect, alignment, text);
    return image;
  }
  Columns columns(const char *text, Qt::Alignment alignment) const {
    return columnsOf(drawn(QString::fromUtf8(text), alignment | Qt::AlignVCenter));
  }

  // The widest figure, the 8, is 14 wide, the widest sign 12.
  const UnevenFont mFont;
};

TEST_F(TabularTextTest, EachFigureStandsInTheMiddleOfAPlaceAsWideAsTheWidest) {
  // The places of the figures are 32 to 46 and 46 to 60.
  EXPECT_EQ(columns("+11", Qt::AlignLeft), (Columns{{24, 29}, {38, 39}, {52, 53}}));
  EXPECT_EQ(columns("+18", Qt::AlignLeft), (Columns{{24, 29}, {38, 39}, {48, 57}}));
  EXPECT_EQ(columns("+81", Qt::AlignLeft), (Columns{{24, 29}, {34, 43}, {52, 53}}));
}

TEST_F(TabularTextTest, ATextOnTheRightEndsWithAPlace) {
  // 120 less 12 and twice 14.
  EXPECT_EQ(columns("+11", Qt::AlignRight), (Columns{{84, 89}, {98, 99}, {112, 113}}));
  EXPECT_EQ(columns("+18", Qt::AlignRight), (Columns{{84, 89}, {98, 99}, {108, 117}}));
  EXPECT_EQ(columns("1", Qt::AlignRight), (Columns{{112, 113}}));
}

TEST_F(TabularTextTest, ATextInTheMiddleHasAsMuchRoomOnBothSides) {
  // 40 wide, from 50 to 90.
  EXPECT_EQ(columns("+11", Qt::AlignHCenter), (Columns{{54, 59}, {68, 69}, {82, 83}}));
  EXPECT_EQ(columns("+18", Qt::AlignHCenter), (Columns{{54, 59}, {68, 69}, {78, 87}}));
}

TEST_F(TabularTextTest, TheSignDoesNotMoveTheFiguresAndStandsCloseToThem) {
  EXPECT_EQ(columns("+8", Qt::AlignLeft), (Columns{{24, 29}, {34, 43}}));
  EXPECT_EQ(columns("-8", Qt::AlignLeft), (Columns{{28, 29}, {34, 43}}));
  EXPECT_EQ(columns("±8", Qt::AlignLeft), (Columns{{22, 29}, {34, 43}}));
  EXPECT_EQ(columns("+8", Qt::AlignRight), (Columns{{98, 103}, {108, 117}}));
  EXPECT_EQ(columns("-8", Qt::AlignRight), (Columns{{102, 103}, {108, 117}}));
  EXPECT_EQ(columns("8", Qt::AlignRight), (Columns{{108, 117}}));
}

TEST_F(TabularTextTest, WhatIsNoFigureKeepsItsWidth) {
  EXPECT_EQ(columns("1C1", Qt::AlignLeft), (Columns{{26, 27}, {36, 40}, {49, 50}}));
  EXPECT_EQ(columns("CC", Qt::AlignRight), (Columns{{104, 108}, {113, 117}}));
}

TEST_F(TabularTextTest, ATextWiderThanItsPlaceIsNotCut) {
  const auto text = QStringLiteral("+11");
  EXPECT_EQ(columnsOf(drawn(text, Qt::AlignRight | Qt::AlignVCenter, QRectF(50, 0, 10, 40))),
            (Columns{{24, 29}, {38, 39}, {52, 53}}));
  EXPECT_EQ(columnsOf(drawn(text, Qt::AlignLeft | Qt::AlignVCenter, QRectF(20, 10, 10, 4))),
            (Columns{{24, 29}, {38, 39}, {52, 53}}));
}

TEST_F(TabularTextTest, StandsAtTheTopOrAtTheBottomAsTold) {
  const QRectF rect(20.0, 3.0, 100.0, 34.0);
  const auto rows = [&](Qt::Alignment alignment) {
    return columnsOf(drawn(QStringLiteral("8"), Qt::AlignLeft | alignment, rect)
                         .transformed(QTransform(0, 1, 1, 0, 0, 0)));
  };
  // The base line is 16 below the top, 4 above the bottom.
  EXPECT_EQ(rows(Qt::AlignTop), (Columns{{9, 18}}));
  EXPECT_EQ(rows(Qt::AlignBottom), (Columns{{23, 32}}));
}

TEST_F(TabularTextTest, AFieldDrawsItsTextSoOnlyWhenItIsTold) {
  ZoomRig<AutoResizeTextField> field(QRect(20, 40, 100, 30));
  field->setAlignment(Qt::AlignRight);
  field->setFont(mFont.font());
  field->setFontPixelSize(20);
  const auto shown = [&](const char *text) {
    field->setStringValue(QString::fromUtf8(text));
    return columnsOf(field.view().grab().toImage());
  };
  // Each 1 is 6 wide.
  EXPECT_EQ(shown("+11"), (Columns{{100, 105}, {110, 111}, {116, 117}}));
  field->setTabular(true);
  EXPECT_EQ(shown("+11"), (Columns{{84, 89}, {98, 99}, {112, 113}}));
  EXPECT_EQ(shown("-18"), (Columns{{88, 89}, {98, 99}, {108, 117}}));
}

}  // namespace
}  // namespace orvane::test
