// Has the application quit when it is asked to from outside: by SIGTERM, SIGINT or SIGHUP, and by
// the end of the session. Main thread; one object at a time, for the life of the application.
#pragma once

#include <functional>

#include <QObject>
#include <QSocketNotifier>

#include "audio/WakeUpDescriptor.h"

namespace orvane {

class QuitSignals : public QObject {
 public:
  // quit is called from the event loop, at most once for each signal.
  explicit QuitSignals(std::function<void()> quit);
  ~QuitSignals() override;

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  const std::function<void()> mQuit;
  QSocketNotifier mNotifier;
};

}  // namespace orvane
