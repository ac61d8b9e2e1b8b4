// Runs the tests with an application and a screen of their own, which no desktop has a part in.
#include <QApplication>
#include <QDir>
#include <QProxyStyle>

#include <gtest/gtest.h>

#include "tests/TemporaryFolder.h"

namespace {

// Whatever would be animated is there at once; the tests of an animation bring a style of their
// own.
class StillStyle : public QProxyStyle {
 public:
  StillStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                QStyleHintReturn *returned) const override {
    return hint == SH_Widget_Animation_Duration
               ? 0
               : QProxyStyle::styleHint(hint, option, widget, returned);
  }
};

}  // namespace

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  // Without one, and with root's, the toolkit makes a folder that stays.
  const orvane::test::TemporaryFolder runtime;
  qputenv("XDG_RUNTIME_DIR", (runtime / "").c_str());
  const QApplication application(argc, argv);
  QApplication::setStyle(new StillStyle);
  QDir::setSearchPaths(QStringLiteral("resources"), {QStringLiteral(ORVANE_RESOURCES_DIR)});
  return RUN_ALL_TESTS();
}
