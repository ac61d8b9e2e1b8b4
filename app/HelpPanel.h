// The help window, loaded from its description when it is first asked for. Main thread.
#pragma once

#include <optional>

#include <QObject>

#include "app/InterfaceDescription.h"
#include "app/System.h"
#include "views/Window.h"

namespace orvane {

class HelpPanel : public QObject {
 public:
  // Shows the one panel of the process, which is made on first use and belongs to the application.
  // Returns its window, or null when there is none to show.
  static Window *showHelpPanel(System &system);

  // Centres the window when it was not visible and brings it to the front. A description that
  // cannot be loaded is logged, beeps, and is tried again the next time.
  void showHelpPanel();

  Window *window = nullptr;

 private:
  explicit HelpPanel(System &system);

  System &mSystem;
  std::optional<InterfaceDescription> mDescription;
};

}  // namespace orvane
