// The content of a window of proportional controls: tells them, on every change of its size, to lay
// themselves out again. The size it has when they are put into it is the one they were laid out
// for. Main thread.
#pragma once

#include <QSizeF>
#include <QWidget>

namespace orvane {

class ContentView : public QWidget {
  Q_OBJECT

 public:
  explicit ContentView(QWidget *parent = nullptr);

 protected:
  void childEvent(QChildEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;

 private:
  QSizeF mSize;  // of the last layout
  bool mIsLaidOut = false;
};

}  // namespace orvane
