// A picture, stretched over the view. Main thread.
#pragma once

#include <memory>

#include <QWidget>

#include "views/Picture.h"
#include "views/Zoomed.h"

namespace orvane {

class AutoResizeImageView : public Zoomed<QWidget> {
  Q_OBJECT
  // Of the picture in the resources; empty when it was set otherwise.
  Q_PROPERTY(QString imageName READ imageName WRITE setImageName)

 public:
  explicit AutoResizeImageView(QWidget *parent = nullptr);

  const std::shared_ptr<const Picture> &image() const { return mImage; }
  // Null shows nothing. The picture it already shows is not drawn again.
  QString imageName() const { return mImageName; }
  void setImageName(const QString &name);
  void setImage(const std::shared_ptr<const Picture> &image);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  QString mImageName;
  std::shared_ptr<const Picture> mImage;
};

}  // namespace orvane
