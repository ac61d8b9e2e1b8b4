// A place in the window that lamps or other pictures fill, which draws nothing and by which
// assistive programs read them all as one meter. Main thread.
#pragma once

#include "views/AccessibleMeter.h"
#include "views/Zoomed.h"

namespace orvane {

class AutoResizeMeter : public Zoomed<QWidget>, public AccessibleMeter {
  Q_OBJECT
  Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
  Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
  // What the pictures tell besides the value, such as by their colour.
  Q_PROPERTY(QString state READ state WRITE setState)

 public:
  explicit AutoResizeMeter(QWidget *parent = nullptr);

  QString state() const { return accessibleDescription(); }
  void setState(const QString &state);
};

}  // namespace orvane
