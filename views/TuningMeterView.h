// The needle meter: a face, a needle that slides with the deviation, and a scale over it, all
// stretched to the view's size. A picture that is missing is left out. Main thread.
#pragma once

#include <memory>

#include <QSizeF>
#include <QWidget>

#include "views/AccessibleMeter.h"
#include "views/Picture.h"

namespace orvane {

class TuningMeterView : public QWidget, public AccessibleMeter {
  Q_OBJECT

 public:
  // Loads the pictures "tuningmeter", "tuningscale", "tuningneedle" and "intuneneedle".
  explicit TuningMeterView(QWidget *parent = nullptr);

  // The deviation in cents. Redraws only when it differs from the one shown; not a number always
  // differs. What assistive programs read is setValue's.
  void setCent(float cent);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  std::shared_ptr<const Picture> tuningmeterImage;
  std::shared_ptr<const Picture> tuningscaleImage;
  std::shared_ptr<const Picture> tuningneedleImage;
  std::shared_ptr<const Picture> intuneneedleImage;
  QSizeF tuningneedleSize;  // of both needles
  float mCent = 0.0F;
  [[maybe_unused]] float mDisplayCent = 0.0F;  // reserved for a damped needle
};

}  // namespace orvane
