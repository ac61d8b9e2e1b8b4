// Counts the paints of every widget of the process.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <utility>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QWidget>

namespace orvane::test {

using Paints = std::map<std::string, int>;  // by the widgets' object names

class PaintWatch : public QObject {
 public:
  PaintWatch() { qApp->installEventFilter(this); }

  // Waits until nothing has been painted for a while; what was painted since the last time.
  Paints settle() {
    QElapsedTimer quiet;
    quiet.start();
    for (int before = mCount; quiet.elapsed() < 50; before = mCount) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
      QApplication::processEvents();
      if (mCount != before)
        quiet.restart();
    }
    return std::exchange(mPaints, {});
  }

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override {
    if (event->type() == QEvent::Paint && watched->isWidgetType()) {
      ++mCount;
      ++mPaints[watched->objectName().toStdString()];
    }
    return false;
  }

 private:
  int mCount = 0;
  Paints mPaints;
};

}  // namespace orvane::test
