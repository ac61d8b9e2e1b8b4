#include "views/AutoResizeImageView.h"

namespace orvane {

AutoResizeImageView::AutoResizeImageView(QWidget *parent) : Zoomed(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void AutoResizeImageView::setImage(const std::shared_ptr<const Picture> &image) {
  if (image == mImage)
    return;
  mImage = image;
  update();
}

void AutoResizeImageView::setImageName(const QString &name) {
  setImage(Picture::imageNamed(name));
  mImageName = name;
}

void AutoResizeImageView::paintEvent(QPaintEvent * /*event*/) {
  if (mImage == nullptr)
    return;
  QPainter painter(this);
  mImage->drawInRect(painter, bounds());
}

}  // namespace orvane
