// The system seam on a real desktop. Main thread.
#pragma once

#include <QString>
#include <QStringList>

#include "app/System.h"

namespace orvane {

class DesktopSystem : public System {
 public:
  void beep() override;
  void openSoundSettings() override;
  void showSoundInputPage() override;
  void runAlertPanel(const std::string &title, const std::string &message,
                     const std::string &button) override;
  void terminate() override;
  std::unique_ptr<SpeechSynthesizer> makeSpeechSynthesizer() override;
  // "orvane: LINE" on standard error.
  void log(const std::string &line) override;

  // The programs that open the sound settings, and their input page, of the desktop named as
  // XDG_CURRENT_DESKTOP names it: "GNOME", "ubuntu:GNOME", "KDE", … Any thread.
  static QStringList soundSettingsCommand(const QString &currentDesktop);
  static QStringList soundInputPageCommand(const QString &currentDesktop);
};

}  // namespace orvane
