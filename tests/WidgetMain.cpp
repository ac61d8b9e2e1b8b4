// Runs the tests with an application and a screen of their own, which no desktop has a part in.
#include <QApplication>
#include <QDir>

#include <gtest/gtest.h>

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  QDir::setSearchPaths(QStringLiteral("resources"), {QStringLiteral(ORVANE_RESOURCES_DIR)});
  return RUN_ALL_TESTS();
}
