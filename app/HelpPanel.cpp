#include "app/HelpPanel.h"

#include <QApplication>
#include <QPointer>

namespace orvane {

HelpPanel::HelpPanel(System &system) : QObject(qApp), mSystem(system) {}

Window *HelpPanel::showHelpPanel(System &system) {
  static QPointer<HelpPanel> panel;
  if (panel == nullptr) {
    panel = new HelpPanel(system);
    // The application deletes its children when it is too late for a window.
    qAddPostRoutine([] { delete panel; });
  }
  panel->showHelpPanel();
  return panel->window;
}

void HelpPanel::showHelpPanel() {
  if (window == nullptr) {
    try {
      mDescription.emplace(QStringLiteral("Help"));
      window = &mDescription->root<Window>();
    } catch (const InterfaceError &error) {
      mDescription.reset();
      mSystem.log("Failed to load Help.nib");
      mSystem.log(error.what());
      mSystem.beep();
      return;
    }
  }
  if (!window->isVisible())
    window->center();
  window->makeKeyAndOrderFront();
}

}  // namespace orvane
