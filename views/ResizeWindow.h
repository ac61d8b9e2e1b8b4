// The class of the main window in its interface description. It adds nothing to Window.
#pragma once

#include "views/Window.h"

namespace orvane {

class ResizeWindow : public Window {
  Q_OBJECT

 public:
  using Window::Window;
};

}  // namespace orvane
